/* The one report file: open, write, close. Every text goes into the file at once, so what has been
 * collected is on disk whatever happens next. Writers called while no report is open write
 * nothing and return 0. A report that may end a host by a signal, its reader gone (SIGPIPE) or a
 * limit met (SIGXFSZ), gives a result instead: EPIPE and EFBIG. */
#ifndef SIT_COMMFILE_H
#define SIT_COMMFILE_H

#include "sit/export.h"

SIT_BEGIN_C

/* Opens the report at `path` (at most 255 characters). `mode` is a bit set: 64 truncates or
 * creates the file and writes the header; 1024 appends and writes the header only when the file is
 * new; 64 wins over 1024. On success the session's reportDir holds the report's directory: the
 * path up to its last "/", else the working directory, else ".".
 * Returns 0; SIT_NO_REPORT_PATH for a null path; SIT_BAD_OPEN_MODE for a mode with neither bit;
 * SIT_PATH_TOO_LONG for a path that is too long; else the system error number of the failed open,
 * ENXIO for a FIFO without a reader. A failure leaves the file and an open report as they were; a
 * success puts the new report in the place of the open one, which gets no end mark. The file is
 * close-on-exec. */
SIT_API int LogOpen(const char *path, int mode) SIT_NOEXCEPT;

/* Ends the open report: writes the end mark "\n==End of Log==" when `final` is exactly 1, then a
 * newline, closes the file and empties the session's reportDir.
 * Returns 0, or the system error number of writing that. */
SIT_API int LogClose(int final) SIT_NOEXCEPT;

/* Writes a message formatted by msgsub. Returns 0, or -1 when it cannot be written. */
SIT_API int LogMsg(const char *format, ...) SIT_NOEXCEPT;

/* The same with the prefix "VERBOSE: ", in verbose mode only. Returns 0 when that is off. */
SIT_API int LogMsgV(const char *format, ...) SIT_NOEXCEPT;

/* Writes `text` as it stands. Returns 0, or -1 when it cannot be written. */
SIT_API int LogString(const char *text) SIT_NOEXCEPT;

/* Writes `title` as it stands, a line of as many "=" and an empty line. */
SIT_API void LogTitle(const char *title) SIT_NOEXCEPT;

/* Writes the header of a new report: product, version, user, host, date and time. User and host
 * come from the session, or from the system when there is none. */
SIT_API void Print_Header(void) SIT_NOEXCEPT;

/* Writes a line of 80 "=" and an empty line. Returns what LogMsg returns. */
SIT_API int print_stat_line(void) SIT_NOEXCEPT;

/* Writes the local date and time in the form "Mon Nov 16 20:15:44 2026\n" into `buffer`, at
 * least 26 bytes. Returns the number of characters, 0 when the time cannot be had. Relies on
 * gettimeofday and the time zone of the process. */
SIT_API int logtime(char *buffer) SIT_NOEXCEPT;

/* The directory part of `path`, up to and including its last "/"; an empty text when it has
 * none. Returns a new text that the caller frees, or null when memory runs out. */
SIT_API char *get_dir(const char *path) SIT_NOEXCEPT;

SIT_END_C

#endif
