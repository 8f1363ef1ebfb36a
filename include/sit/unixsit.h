/* The Unix platform operations. */
#ifndef SIT_UNIXSIT_H
#define SIT_UNIXSIT_H

#include "sit/export.h"
#include "sit/session.h"

SIT_BEGIN_C

/* The Unix table; initiation makes it the one in use. */
extern SIT_API PlatformOps sitfunctbl;

/* Looks for the file "version" in the directory that the environment variable PHM names.
 * Returns 0 when it exists, 1 when PHM is not set, 2 when there is no such file. */
SIT_API int FindPelInstUnix(void) SIT_NOEXCEPT;

/* Writes system, node, release, version and machine name (uname), separated by blanks and ended
 * by two blanks and a newline, into `buffer`, at least 256 bytes; cut at 255 characters.
 * Returns the number of characters written. */
SIT_API int GetUnixVers(char *buffer) SIT_NOEXCEPT;

/* Writes what the shell command "set" prints into the open report (popen).
 * Returns 0, or 1 when the command could not be started. */
SIT_API int GetEnvVarUnix(void) SIT_NOEXCEPT;

/* Does nothing with any arguments. Returns 0. */
SIT_API int sitIntegerNoOp(SIT_ANY_ARGUMENTS) SIT_NOEXCEPT;

SIT_END_C

#endif
