/* Web-server configuration: one Netscape/iPlanet server instance, or Apache. The two commands
 * work without a session and initiate none. Paths hold at most 255 characters; one that would be
 * longer is not used, and the open report says so. Lines of configuration files are examined in
 * pieces of 254 characters, as C texts: up to a NUL. */
#ifndef SIT_WEBSVR_H
#define SIT_WEBSVR_H

#include "sit/codes.h"
#include "sit/export.h"

SIT_BEGIN_C

/* ---- Netscape/iPlanet ---- */

/* The text before a server's name in its magnus.conf: "ServerID https-". */
extern SIT_API const char *nsSrvId;

/* Bits of the flag word of CheckNetscapeServerName. */
enum { SIT_CONFIG_MISSING = 1 /* an instance has no config/magnus.conf */ };

/* "Netscape/iPlanet Configuration": writes the configuration of the instance named `server_name`
 * under `server_root` into a new report at `path`. An empty name means the only instance there is.
 * Without verbose mode a failed search makes no report; with it the report shows the search.
 * Returns 0 or one of, the first that applies:
 *   SIT_NO_REPORT_PATH: the report path is null or empty
 *   SIT_NO_SERVER: the server root is empty or holds no instance
 *   SIT_NOT_FOUND: the server root does not exist or is longer than 255 characters
 *   SIT_SERVERS_AMBIGUOUS, SIT_NO_SERVER_OF_NAME, SIT_NO_SERVER_CONFIG, a system error number: what
 *     GetNetscapeServerDir returns
 *   else: what opening or closing the report returns; see commfile.h
 * In verbose mode the report is opened before the search. */
SIT_API int GetNetscapeInfo(const char *path, const char *server_root,
                            const char *server_name) SIT_NOEXCEPT;

/* Looks through the directories "https-*" of `server_root`, but for "https-admserv", and writes
 * the path of the first one that CheckNetscapeServerName accepts into `output`, at least 256
 * bytes; an empty text when there is none.
 * Returns 0 when exactly one is accepted; SIT_SERVERS_AMBIGUOUS when more are; SIT_NO_SERVER when
 * there is no such directory; SIT_NO_SERVER_CONFIG when none is accepted and some lack their
 * magnus.conf; SIT_NO_SERVER_OF_NAME when none is accepted otherwise; the system error number when
 * the server root cannot be read to its end; EINVAL for a null root or output. Relies on opendir
 * and readdir. */
SIT_API int GetNetscapeServerDir(const char *server_root, const char *server_name,
                                 char *output) SIT_NOEXCEPT;

/* 1 when the instance `entry` under `server_root` has a magnus.conf whose first server id is
 * `server_name`, or has one at all when that name is empty; else 0. Sets SIT_CONFIG_MISSING in
 * `flags` (may be null) when it has none. Writes verbose messages only. */
SIT_API int CheckNetscapeServerName(const char *server_root, const char *entry,
                                    const char *server_name, unsigned int *flags) SIT_NOEXCEPT;

/* Writes the sections of one instance into the open report: configuration files, CGI directories,
 * startup script. Returns 0, or 2 when config/magnus.conf is missing; the rest is then left out. */
SIT_API int LogNetscapeConfig(const char *instance) SIT_NOEXCEPT;

/* Writes the path of the instance's object file into `output`, at least 256 bytes: the one that
 * `magnus_conf` loads, else config/obj.conf; an empty text when it would be too long.
 * Returns 0, or the system error number when magnus.conf cannot be opened. */
SIT_API int GetNetscapeObjConf(const char *magnus_conf, const char *instance,
                               char *output) SIT_NOEXCEPT;

/* Lists each CGI directory that the object file maps into the open report (ListFiles).
 * Returns 0, or the system error number when the object file cannot be opened. */
SIT_API int LogNetscapeCGIDirs(const char *object_file) SIT_NOEXCEPT;

/* ---- Apache ---- */

/* "Apache Configuration": writes conf/httpd.conf under `server_root`, or
 * /etc/httpd/conf/httpd.conf when that is empty, and listings of its script directories into a new
 * report at `path`. Returns 0 or one of:
 *   SIT_NO_REPORT_PATH: the report path is null or empty
 *   SIT_NOT_FOUND: the configuration file does not exist, or its path is longer than 255
 *     characters; no report is made
 *   else: the system error number of reading the configuration file, or what opening or closing
 *     the report returns; see commfile.h */
SIT_API int GetApacheInfo(const char *path, const char *server_root) SIT_NOEXCEPT;

/* Lists each directory that a ScriptAlias of the configuration file maps into the open report
 * (ListFiles); relative ones are those of `server_root`. Writes nothing when the file cannot be
 * opened. */
SIT_API void FindApacheScriptAlias(const char *httpd_conf, const char *server_root) SIT_NOEXCEPT;

/* ---- Values and paths ---- */

/* Writes the value at the beginning of `text`, behind blanks and tabs, into `output`, at least
 * 256 bytes. It stands between quotes of either kind, or ends before a blank, a tab or "#"; at
 * the latest it ends with the line. A value of more than 255 characters gives an empty text. */
SIT_API void GetConfPathName(const char *text, char *output) SIT_NOEXCEPT;

/* Writes `path` into `output`, at least 256 bytes, when it is absolute, else `base`, "/" and
 * `path`; an empty text when that is too long. `output` may be one of the arguments. */
SIT_API void MakeAbsolutePath(const char *path, const char *base, char *output) SIT_NOEXCEPT;

/* 1 when `path` begins with "/", else 0. */
SIT_API int IsAbsolutePath(const char *path) SIT_NOEXCEPT;

/* Removes one "/" or "\" from the end of `path`, in place. */
SIT_API void StripTrailingSlash(char *path) SIT_NOEXCEPT;

SIT_END_C

#endif
