/* Running commands under a time limit, and the file helpers around them. What they ask of the
 * host's signals, descriptors and threads: docs/host.md. */
#ifndef SIT_SITUTIL_H
#define SIT_SITUTIL_H

#include "sit/export.h"

SIT_BEGIN_C

/* Runs `command` through "/bin/sh" "-c" ("--" before it when it begins with "-" or "+") with its
 * standard output and standard error in the file `output`, which is created with mode 0666 less the
 * umask and is not truncated. Waits until the command has ended, at most 60 seconds; a command
 * still running then is left alone, neither signalled nor waited for again. The command starts with
 * standard input from /dev/null, the default action for what the host handles and for SIGPIPE and
 * SIGCHLD, no blocked signals, and no descriptor of the host's.
 * Returns 0 for exit code 0; -1 for exit code 1, for the time limit, and when no child could be
 * made or waited for; else the wait status (exit code times 256, or the signal number).
 * Exit code 255 also stands for an output file that cannot be opened, as a FIFO without a reader,
 * or a missing shell. When the host takes the result of its child, the open report says so once.
 * Relies on clone, or fork where that is refused, which borrows the host's memory until the command
 * runs; on waitpid and, where the kernel has it, pidfd_open. Leaves SIGCHLD as it is. */
SIT_API int execcmd(const char *command, const char *output) SIT_NOEXCEPT;

/* Runs `command` with execcmd and copies what it printed into the open report, whether it
 * succeeded or not. With an `output` path the text stays in that file instead and nothing is
 * copied; null stands for a temporary file of mode 0600, in the places of GetTempFile, where 4 KB
 * can be written. The report says when output may be lost because that file could not grow. */
SIT_API void LogCmdOutput(const char *command, const char *output) SIT_NOEXCEPT;

/* A name for a temporary file, prefix "sit", that belongs to no file and that can be created:
 * in TMPDIR when that names a directory, else in /tmp; failing that, in the directory of the
 * open report. Whoever makes the file must do so with O_EXCL: the name is free for others, too.
 * Returns a new text that the caller frees, or null when no file can be made. */
SIT_API char *GetTempFile(void) SIT_NOEXCEPT;

/* Copies the file at `path` into the open report as it stands: what it held at the opening, or of a
 * file without a size, as under /proc, the first 16777216 bytes; the report says when there are
 * more, and when reading fails before the end. A FIFO without a writer reads as empty.
 * Returns 0, or the system error number of the failed open: EINVAL for a device but /dev/null. */
SIT_API int ReadTextFile(const char *path) SIT_NOEXCEPT;

/* The mode bits (type and permissions) of what `path` names, symbolic links followed; 0 when it
 * cannot be examined (errno then says why). */
SIT_API unsigned int FileExists(const char *path) SIT_NOEXCEPT;

/* Copies `source` to `destination`, which is truncated or, with a non-zero `append`, added to.
 * With a non-zero `trim` a source of more than 1048576 bytes is copied from the first line that
 * begins in its last 1048576 bytes, behind a banner that says so. What a source grows by
 * meanwhile is left out, and so is what a file without a size holds behind its first 16777216
 * bytes.
 * Returns 0; -1 for a null path; EINVAL when both name one file, and for a source that is a device
 * but /dev/null; else the system error number. A copy that failed half-way is removed (of a
 * symbolic link the link), unless the destination is no file, or is added to and held something
 * before. */
SIT_API int CopyEndOfFile(const char *source, const char *destination, int trim,
                          int append) SIT_NOEXCEPT;

/* Writes what "ls -lL" ("ls -lLR" when `recursive` is not 0) prints about `directory` into the
 * open report, or that it does not exist. The command holds at most 255 characters, the path
 * between quotes as it stands; a longer one is not run, and the report says so. Always returns 0.
 */
SIT_API int ListFiles(const char *directory, int recursive) SIT_NOEXCEPT;

/* Copies `source` to `destination` with the command "cp" and writes that, what the command prints,
 * or that the source does not exist into the open report. Blanks in either name part words, each a
 * name to cp. A name with any other character that means something to the shell, a word that begins
 * with "-", a device, a FIFO and a file without a size, as under /proc, are not copied, and the
 * report says so. The command holds at most 511 characters;
 * a longer one is not run, and the report says so. */
SIT_API void MyCopy(const char *source, const char *destination) SIT_NOEXCEPT;

SIT_END_C

#endif
