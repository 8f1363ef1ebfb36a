/* The broker and admin-server configuration of an installation. */
#ifndef SIT_OBVALID_H
#define SIT_OBVALID_H

#include <stdint.h>

#include "sit/codes.h"
#include "sit/export.h"
#include "sit/pelver.h"

SIT_BEGIN_C

/* ---- Admin server ---- */

/* Where the broker properties file of the current validation is: at most 254 characters in 255
 * bytes, empty at load. It keeps its last value between calls. */
extern SIT_API char obroker[];

/* What reading a plugins file gives, besides 0 (nothing to read) and SIT_PLUGINS_UNREADABLE. */
enum {
  OB_LOCATION_FOUND = 1, /* the location is in obroker */
  OB_NO_LOCATION = 10000 /* the file was read and names none; obroker is as it was */
};

/* Writes the path of the installation's own plugins file into `buffer`, 255 bytes. An empty text
 * for an installation without one: before release 9, or a web client, framework or monitoring
 * product. A path of more than 254 characters gives an empty text too; the report says so. */
SIT_API void GetAdminServerPluginsFile(const PHMVER *record, char *buffer) SIT_NOEXCEPT;

/* Reads the location of the broker properties file out of a plugins file of the format that the
 * record's release uses: 9 blocks, 10 sections, others none (0). A null or empty `path` stands for
 * the installation's own file. The file is read in pieces of 254 characters, each of which counts
 * as a line.
 * Returns OB_LOCATION_FOUND, OB_NO_LOCATION, SIT_PLUGINS_UNREADABLE with the reason in errno, or
 * 0. */
SIT_API int ReadPlugins(const PHMVER *record, const char *path) SIT_NOEXCEPT;

/* The same in the block format of release 9; 0 for a null or empty path. */
SIT_API int ReadPluginsV9(const char *path) SIT_NOEXCEPT;

/* The same in the section format of release 10; 0 for a null or empty path. */
SIT_API int ReadPluginsV10(const char *path) SIT_NOEXCEPT;

/* 1 when an installation of this version (case ignored, patch part included) has its own plugins
 * file, else 0. */
SIT_API int FindAdminServer(const char *version) SIT_NOEXCEPT;

/* The admin-server work directory of the first plain Pelloran installation of this version (case
 * ignored, patch part included): the value of the environment variable WRKDIR, whatever it is, else
 * the first existing path that the control script bin/peladsv gives it. The record's wrkDir becomes
 * a copy. Returns the environment's own text, which is not to be freed, when WRKDIR is set; else a
 * new text that the caller frees, or null when there is no such directory or no memory. */
SIT_API char *GetAdmSrvWrkDir(const char *version) SIT_NOEXCEPT;

/* ---- Brokers ---- */

/* Check tools: one for each kind of broker, in the directory bin of an installation. */
enum { SIT_CHECK_TOOLS = 7 };
typedef struct CheckTool {
  const char *tool; /* file name */
  const char *type; /* the kind of broker as reports call it */
} CheckTool;
extern SIT_API const CheckTool scripts[];

/* The parameter files of the brokers seen by the current validation, separated by ","; null when
 * there are none. */
extern SIT_API char *plistpfname;

/* Validates the broker properties file: finds it (pluginsFile of the record becomes `plugins_file`
 * or, when that is null or empty, the installation's own), runs every check tool of the
 * installation over it, notes the log files that they tell of, and writes their output and all
 * parameter files into the open report. With a `broker`, only that one is looked for. With a
 * non-zero `copy`, and when no check failed, the file is then copied into the directory
 * `destination`, its name followed by the installation's version; without any check tool only the
 * installation's own file is.
 * Returns 0 or one of:
 *   -1: the record is null
 *   1: a check failed; or, without any check tool, the plugins file named the location
 *   OB_NO_LOCATION: without any check tool, the plugins file named no location
 *   SIT_NO_BROKER_PROPERTIES: the broker properties file is missing or a directory
 *   SIT_NO_PLUGINS_FILE: the plugins file is missing or a directory
 *   SIT_PLUGINS_UNREADABLE: the plugins file cannot be opened
 *   SIT_COPY_FAILED: the broker properties file could not be copied; EINVAL stands for a null
 *     destination
 * Each tool has a minute; see execcmd. */
SIT_API int ValidateOB(PHMVER *record, const char *plugins_file, const char *broker, int copy,
                       const char *destination) SIT_NOEXCEPT;

/* Runs the check tool at the path `tool` over obroker (only if `location` is given), for all
 * brokers or the one named `broker` (at most 254 characters), and writes what it prints into the
 * open report. Its brokers' logs are noted under `version`; the types "AP" and "WP" tell of
 * parameter files, too. The output is read in pieces of 254 characters, each of which counts as a
 * line.
 * Returns 0; SIT_NO_REPORT_PATH without a tool; SIT_NOT_FOUND when its command is too long, which
 * the report says, or its output cannot be opened; SIT_NO_SUCH_BROKER when the tool cannot find
 * the broker, or its name is too long; SIT_PROPERTY_NOT_LOADED when the tool cannot load a
 * property. */
SIT_API int ValidateOBInstance(const char *version, const char *tool, const char *broker,
                               const char *location, const char *type) SIT_NOEXCEPT;

/* Writes the broker name of a header line, what stands behind its last ".", into `buffer`, 255
 * bytes. Without a "." it is what stands behind "Configuration Information for". Returns 0; 1 when
 * memory runs out or the name is too long, with an empty text in the buffer. */
SIT_API int SetObjectName(char *buffer, const char *line) SIT_NOEXCEPT;

/* The value of the option "-pf" in a line: up to a space, the end of a quoted stretch (the quotes
 * stay; a space in it does) or the end of the line. A new text that the caller frees; null for a
 * line without the option and when memory runs out. */
SIT_API char *GetPFValue(const char *line) SIT_NOEXCEPT;

/* Adds a value of GetPFValue, its quotes removed and `directory` before a relative one, to
 * plistpfname, unless the list contains that text already. A null value adds nothing. When memory
 * runs out the list is left empty. */
SIT_API void Add_pf_name(const char *directory, const char *value) SIT_NOEXCEPT;

/* Writes a parameter file under its name into the open report; `directory` may be null. Returns
 * what the last write into the report returns. */
SIT_API int LogParameterFile(const char *directory, const char *file) SIT_NOEXCEPT;

/* ---- Connection manager ---- */

/* Validates the connection-manager properties file: runs the installation's tool bin/dbconfig over
 * it, writes what that prints into the open report and notes the logs of the databases. The file
 * is `properties` (conmgrFile of the record becomes a copy) or, when that is null or empty,
 * properties/conmgr.properties of the installation. With a non-zero `copy` it is then copied into
 * the directory `destination`, its name followed by the installation's version.
 * Returns 0 or one of:
 *   -1: the record is null
 *   1: memory ran out
 *   SIT_NO_CONMGR_PROPERTIES: the properties file is missing or a directory
 *   SIT_COPY_FAILED: it could not be copied; EINVAL stands for a null destination
 *   SIT_NO_DATABASE_TOOL: there is no dbconfig; the report does not say so */
SIT_API int ValidateConMgr(PHMVER *record, const char *properties, int copy,
                           const char *destination) SIT_NOEXCEPT;

/* ---- Logs ---- */

/* Where a log file was learned of. */
enum {
  LT_SERVER = 1,  /* a check tool's "srvrLogFile" */
  LT_BROKER = 2,  /* its "brokerLogFile" */
  LT_LOG = 3,     /* its "logFile" */
  LT_DATABASE = 4 /* a database section of the connection-manager properties file */
};

/* One log file known to the system. The texts belong to the record. */
typedef struct LogEntry {
  int32_t type;  /* LT_ */
  char *version; /* of its installation; null when that has none */
  char *name;    /* of the broker, the server or the database */
  char *logFile; /* path */
} LogEntry;

/* Records of the log table, names of the admin-server logs. */
enum { SIT_LOGS = 255, SIT_ADMSRV_LOGS = 6 };

/* The log table: at most SIT_LOGS records in the order in which they were noted, then one whose
 * name is null. No two records have the same type and, ignoring case, the same version and name.
 * Records are only appended and live until the process ends; what a full table has no room for is
 * left out, which the open report says once in verbose mode. */
extern SIT_API LogEntry logs[];

/* The file names of the admin server's logs, SIT_ADMSRV_LOGS of them. */
typedef char AdmSrvLogName[255];
extern SIT_API const AdmSrvLogName AdmSrvLogs[];

/* Takes the value of `key` from a line that a check tool has printed: what stands between the
 * first ")" and the "(" before it, else what begins two characters after the key. Writes it
 * without the blanks around it into `output`, at least 255 bytes.
 * Returns 0; -1 when the line does not begin with the key, or an argument is null; 1 when memory
 * runs out or the value is longer than 254 characters, which the open report says. On failure
 * `output` stays as it is. */
SIT_API int ReadPropertyValue_From_Validation(const char *line, const char *key,
                                              char *output) SIT_NOEXCEPT;

/* Notes the log file that a check tool's output line gives for the broker or server `name`; the
 * first one noted for a name and type stays. Always returns 0. */
SIT_API int Populate_Logs_Table(const char *line, const char *version,
                                const char *name) SIT_NOEXCEPT;

/* Notes the log files of the databases of a connection-manager properties file: "databasename=",
 * its ".db" replaced by ".lg". The file is read in pieces of 254 characters, each of which counts
 * as a line. Always returns 0. */
SIT_API int Populate_Logs_Table_ConMgr(const char *path, const char *version) SIT_NOEXCEPT;

/* Lists the log table in the open report; meant for verbose mode. Returns what the last write
 * into the report returns. */
SIT_API int List_log_table(void) SIT_NOEXCEPT;

/* Copies `source` to `destination`, with a non-zero `trim` only its last megabyte, as
 * CopyEndOfFile does. Returns 0; -1 for a null path; else the system error number. */
SIT_API int Copy_File(const char *source, const char *destination, int trim) SIT_NOEXCEPT;

/* Copies log files of the installation `version` into the directory `destination`, trimmed to
 * their last megabyte: those noted for the broker, server or database `name`; only those of a
 * database for "db:" and its name; those of the admin server for "admsrv". The log of a database
 * gets a new directory of the database's name. The open report says what could not be copied, and
 * which of the copied logs lie outside the installation.
 * Returns 0 or one of:
 *   1: nothing is noted for the name
 *   -1: an argument is null
 *   SIT_NO_ADMIN_SERVER: the installation has no admin server
 *   SIT_NO_ADMIN_DIRECTORY: the admin server's work directory was not found
 *   SIT_NO_ADMIN_LOGS: no log of the admin server could be copied
 *   SIT_DATABASE_LEFT_OUT: a database of the same name was left out
 * Relies on mkdir. */
SIT_API int Copy_Log_Files(const char *name, const char *version,
                           const char *destination) SIT_NOEXCEPT;

/* Copies the admin server's logs from its work directory into `destination`, trimmed to their last
 * megabyte. `version` is not used. Returns 0 when at least one was copied, else SIT_NO_ADMIN_LOGS.
 */
SIT_API int CopyAdmSrvLogs(const char *version, const char *directory,
                           const char *destination) SIT_NOEXCEPT;

SIT_END_C

#endif
