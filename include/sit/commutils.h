/* The message formatter and the number and text helpers beside it. None of them looks at
 * the locale; a null text counts as an empty one. */
#ifndef SIT_COMMUTILS_H
#define SIT_COMMUTILS_H

#include <stdarg.h>
#include <stdint.h>

#include "sit/export.h"

SIT_BEGIN_C

/* Formats a message into `output`, at least 4096 bytes: at most 4095 characters and a
 * terminator; what goes beyond is cut. Arguments are taken in order from `arguments`:
 *   %s      text (a null pointer prints nothing)
 *   %d %i   int, decimal
 *   %l      int, decimal; complete by itself, a letter after it is ordinary text
 *   %x %X   int, "0x" and lower-case hexadecimal
 *   %c      int, the character of its low byte
 *   %r      no argument: a newline
 * An annotation "<...>" right after one of these is not printed. Any other "%" pair is copied
 * as it stands and takes no argument. */
SIT_API void msgsub(char *output, const char *format, va_list arguments) SIT_NOEXCEPT;

/* Writes `value` in decimal into `output`, at least 12 bytes. Returns its length. */
SIT_API int intoal(int value, char *output) SIT_NOEXCEPT;

/* Writes the low 16 bits of `value`, taken as a signed number, in decimal into `output`, at
 * least 7 bytes. Returns its length. */
SIT_API int intoan(int value, char *output) SIT_NOEXCEPT;

/* Writes "0x" and `value` in lower-case hexadecimal without leading zeros into `output`, at
 * least 11 bytes. Returns its length. */
SIT_API int intohl2(uint32_t value, char *output) SIT_NOEXCEPT;

/* The length of `text` in bytes, without its terminator. */
SIT_API int stlen(const char *text) SIT_NOEXCEPT;

/* Copies `source` with its terminator to `destination`, which must have room for it. Returns
 * a pointer to the terminator written, so that copies can be chained. */
SIT_API char *stcopy(char *destination, const char *source) SIT_NOEXCEPT;

/* Reverses the first `count` characters of `text` in place. */
SIT_API void reversen(char *text, int count) SIT_NOEXCEPT;

/* Reverses the whole of `text` in place. */
SIT_API void reverse(char *text) SIT_NOEXCEPT;

/* A new copy of `text` without its leading blanks and its trailing blanks and newlines. The
 * caller frees it; null for a null text and when memory runs out. */
SIT_API char *StringTrim(const char *text) SIT_NOEXCEPT;

/* Makes every carriage return of `text` a blank, in place. */
SIT_API void StripCRLF(char *text) SIT_NOEXCEPT;

/* Replaces every `find` in `text` by `replacement`, in place. */
SIT_API void strreplace(char *text, char find, char replacement) SIT_NOEXCEPT;

/* Drops the first character of `set` wherever it stands in `text`, in place; of two in a row only
 * the first. */
SIT_API void strremove(char *text, const char *set) SIT_NOEXCEPT;

/* Field `number` (from 1) of `text`, whose fields are separated by `separator`. A text without
 * separator is its own every field. Returns a text of the library's that the next call replaces;
 * null when there is no such field, when it is longer than 254 characters, and when memory runs
 * out. */
SIT_API const char *strentry(unsigned int number, const char *text, char separator) SIT_NOEXCEPT;

/* `count` bytes as two lower-case hexadecimal digits and a blank each. A new text that the caller
 * frees; null when memory runs out. */
SIT_API char *strtohex(const void *bytes, int count) SIT_NOEXCEPT;

/* The same for at most `largest` bytes, followed by "..." when there are more. */
SIT_API char *strtohexmax(const void *bytes, int count, int largest) SIT_NOEXCEPT;

SIT_END_C

#endif
