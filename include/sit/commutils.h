/* The message formatter and the number and text helpers beside it. None of them allocates,
 * keeps state or looks at the locale; a null text counts as an empty one. */
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

SIT_END_C

#endif
