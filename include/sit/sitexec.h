/* What the host calls: the session calls, the queries and the collection commands.
 *
 * Every collection command writes one section into the report at `path` (at most 255 characters)
 * and returns 0 or one of the following. A command about one installation may have nothing to
 * write: its comment says when it makes no report.
 *   SIT_NO_REPORT_PATH: the path is null or empty; nothing else has happened. Not of
 *     GetDelvonFiles, OBCopyFiles and RunCommand, for which a null path means something and an
 *     empty one cannot be opened
 *   SIT_PATH_TOO_LONG: the path is longer than 255 characters
 *   else: the system error number of opening the report or of flushing it at the end
 * `mode` 64 makes a new report with a header; any other value appends. `final` 1 ends the report
 * with "==End of Log==". Commands initiate the session themselves. */
#ifndef SIT_SITEXEC_H
#define SIT_SITEXEC_H

#include <stdint.h>

#include "sit/export.h"

SIT_BEGIN_C

/* ---- Session calls ---- */

/* Makes the session record and fills user, host and operating-system version. Optional: the
 * commands do it when needed. A second call makes a new record. Always returns 0; IsInitiated
 * stays 0 when memory ran out. */
SIT_API int SIT_Initiate(void) SIT_NOEXCEPT;

/* Writes "11.6" into `buffer`, at least 5 bytes. */
SIT_API void GetAPIVersion(char *buffer) SIT_NOEXCEPT;

/* Switches verbose messages in the reports on (non-zero) or off. */
SIT_API void SetVerboseMode(int on) SIT_NOEXCEPT;

/* Switches working without any installation on (non-zero) or off. */
SIT_API void SetPelloranIndependent(int on) SIT_NOEXCEPT;

/* Writes the operating-system version into `buffer`, at least 256 bytes. Returns the buffer, or
 * null when there is no session. */
SIT_API char *GetOSVersion(char *buffer) SIT_NOEXCEPT;

/* Appends `text` and a newline to the session's error text. Ignored before initiation and when
 * memory runs out. */
SIT_API void PutRecentError(const char *text) SIT_NOEXCEPT;

/* Moves the error text into `buffer`, whose current text length states its capacity without the
 * terminator. Returns 0 when it was delivered; else the length needed, and nothing has changed.
 * A null buffer has no room: the length needed is returned. */
SIT_API int RetrieveErrors(char *buffer) SIT_NOEXCEPT;

/* Discovers the installations (again) and stores the messages of that in the session. Returns
 * them; the text belongs to the session. A text stored before stays valid. */
SIT_API char *Initialize_pphm(void) SIT_NOEXCEPT;

/* ---- Queries about installations ---- */

/* The version keys of the installations that the product selector accepts, separated by ",":
 * the version without its patch part, for a monitoring installation followed by ":" and the
 * version of the Pelloran installation it belongs to. At most 255 characters; a key that does not
 * fit is left out. Returns a new text that the caller frees; null when memory runs out. */
SIT_API char *GetPelVersList(unsigned int selector) SIT_NOEXCEPT;

/* 0 when the directory named by the environment variable PHM holds a version file, 1 when PHM is
 * not set, 2 when the file is missing. */
SIT_API int FoundPelInst(void) SIT_NOEXCEPT;

/* 1 when a web-client installation is in the list, else 0. Discovers nothing itself. */
SIT_API int FoundWebClient(void) SIT_NOEXCEPT;

/* ---- Collection commands ---- */

/* "List of environment variables": what the shell's "set" prints. */
SIT_API int GetEnvironInfo(const char *path, int mode, int final) SIT_NOEXCEPT;

/* "System Information": machine, limits, disks, kernel, processes, network, packages; see
 * usysinfo.h. Any `section` but 0 leaves all sections out. */
SIT_API int GetSysInfo(const char *path, int16_t section, int mode, int final) SIT_NOEXCEPT;

/* "Pelloran Versions": the messages of the discovery. Called while another command's report is
 * open, it writes into that one, ignores its arguments and returns 0. */
SIT_API int GetPelVers(const char *path, int mode, int final) SIT_NOEXCEPT;

/* "Java Versions" of the installations, or of the machine in product-independent mode. Joins an
 * open report as GetPelVers does. Also returns SIT_NO_INSTALLATION when no installation was found;
 * the report is complete all the same. */
SIT_API int GetJavaVers(const char *path, int mode, int final) SIT_NOEXCEPT;

/* "OS Version", then the sections of GetPelVers (unless product-independent) and GetJavaVers.
 * `extra` non-zero asks for further versions, of which Unix has none. Also returns
 * SIT_NO_INSTALLATION when no installation was found; the report is complete all the same. */
SIT_API int GetVersInfo(const char *path, int mode, int final, int extra) SIT_NOEXCEPT;

/* The product configuration of the installation that the version key names: its configuration
 * listing, installer's record and add-ons. `mode` is a bit set as for LogOpen (SIT_BAD_OPEN_MODE
 * when it holds neither 64 nor 1024). Returns 0 without a report when there is no installation at
 * all; when there is one, but none matches, the report says so. */
SIT_API int GetPelCFGInfo(const char *path, const char *version_key, int mode, int final,
                          int selector) SIT_NOEXCEPT;

/* A recursive listing of every installation that the version key names. `mode`, no installation at
 * all and no match as for GetPelCFGInfo; a report that is made gets its end mark. */
SIT_API int GetPelInstFiles(const char *path, const char *version_key, int mode, int ignored,
                            int selector) SIT_NOEXCEPT;

/* "Certificates" and, from release 10.0B on, "Keys" of every installation that the version key
 * names: each opens the report anew, and the last one's result counts. For releases up to 8 no
 * report is made. `mode`, no installation at all and no match (0 in any case) as for GetPelCFGInfo;
 * a report that is made gets its end mark. */
SIT_API int GetPelSecurityLog(const char *path, const char *version_key, int mode, int ignored,
                              int selector) SIT_NOEXCEPT;

/* Copies the files of the monitoring installation that the version key names into a new folder in
 * `directory`, at least 256 bytes, which receives the path of that folder. The report at `path` is
 * appended to; null stands for a temporary file (mode 0600) that stays.
 * Returns 0, also when no installation matches (the report says so); -1 for a null directory or
 * key; SIT_NOT_FOUND when there is no temporary file; the codes of opening the report; the system
 * error number when the folder cannot be made, ENAMETOOLONG when its path exceeds 255 characters.
 */
SIT_API int GetDelvonFiles(const char *path, char *directory, const char *version_key) SIT_NOEXCEPT;

/* ---- Brokers and the admin server ---- */

/* "Validation of Ostrel Broker properties file", then "Validation of Connection Manager properties
 * file": validates both files of the first plain Pelloran installation with this version key (at
 * most 255 characters; none that contains "7." or "8."), see ValidateOB and ValidateConMgr, and
 * copies them into the directory `destination`. Empty or null file names stand for the
 * installation's own. `mode` goes to LogOpen as it is; a report that is made gets its end mark.
 * Returns 0 or one of:
 *   SIT_NO_REPORT_PATH: the report path is null or empty
 *   SIT_NO_MATCHING_INSTALLATION: no installation matches; no report is made
 *   SIT_VALIDATION_FAILED: a validation failed, or there is no check tool to make it; the report
 *     is complete
 *   else: what opening or closing the report returns; see commfile.h
 * Leaves the log files found in the table `logs`, for OBCopyFiles. */
SIT_API int GetOBValidationInfo(const char *destination, const char *path, const char *version_key,
                                int mode, int ignored, const char *plugins_file,
                                const char *conmgr_file) SIT_NOEXCEPT;

/* Copies the log files of the broker or server `name`, of a database ("db:" and its name) or of
 * the admin server ("admsrv") into the directory `destination`. Unlike a version key, `version` is
 * the installation's whole version, patch part included. But for the admin server's, log files are
 * known once GetOBValidationInfo has run in this process. The report at `path` is appended to and
 * says what could not be copied; null stands for a temporary file (mode 0600) that stays.
 * Returns what Copy_Log_Files returns; -1 when an argument other than the path is null;
 * SIT_NOT_FOUND when there is no temporary file; what opening the report returns. */
SIT_API int OBCopyFiles(const char *path, const char *name, const char *version,
                        const char *destination) SIT_NOEXCEPT;

/* ---- Capture ---- */

/* Runs a command, or calls an entry point of a shared library, inside the folder
 * `capture_name` of `base` (null: the name alone), so that what it prints and the files it writes
 * are found there. The folder must exist.
 *   command       command line or library path, at most 509 characters
 *   entry         entry point of the library
 *   is_library    non-zero: call the entry point, zero: run the command
 *   output_file   report in the folder that receives what the command prints; empty for none
 *   index         report that notes the call and lists the folder afterwards; null for none
 * Returns 0; ENAMETOOLONG when the command or the path of the folder (255 characters) is too long,
 * which the index then says; the codes of opening the index or, for a command, the output report.
 * The working directory is the same afterwards, even if it was removed meanwhile. */
SIT_API int RunCommand(const char *command, const char *entry, char is_library, const char *base,
                       const char *capture_name, const char *output_file,
                       const char *index) SIT_NOEXCEPT;

/* Loads the library at `path`, calls its entry point without arguments and unloads it.
 * Returns 0, or 1 when it could not be loaded or has no such entry point. `error` receives null, in
 * the latter case a new text that the caller frees (null when memory ran out). */
SIT_API int ExecDLLFunction(const char *path, const char *entry, char **error) SIT_NOEXCEPT;

SIT_END_C

#endif
