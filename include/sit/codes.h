/* Result codes and open modes shared by all commands. Codes other than these are
 * system error numbers (errno values) passed through from file operations. */
#ifndef SIT_CODES_H
#define SIT_CODES_H

enum {
  SIT_OK = 0,
  SIT_FAILED = -1,            /* a command could not be run to its end, or exited with code 1 */
  SIT_NO_REPORT_PATH = 10000, /* the report path is null or empty */
  SIT_NOT_FOUND = 10001,      /* no temporary report name, server directory or configuration file */
  SIT_BAD_OPEN_MODE = 10007,  /* the open mode holds neither SIT_CREATE nor SIT_APPEND */
  SIT_PATH_TOO_LONG = 10008,  /* the report path is longer than 255 characters */
  SIT_NO_INSTALLATION = 10008, /* no installation was found; the report is complete all the same */
  SIT_NO_SERVER = 10025,       /* the server root is empty or holds no server instance */
  SIT_SERVERS_AMBIGUOUS = 10027, /* more than one instance is meant */
  SIT_NO_SERVER_OF_NAME = 10028, /* no instance has the server name */
  SIT_NO_SERVER_CONFIG = 10029,  /* the same, and some instance lacks its configuration file */

  SIT_CREATE = 64,   /* open mode: truncate or create the report and write its header */
  SIT_APPEND = 1024, /* open mode: add to the report; a new file gets the header */

  SIT_FINAL = 1 /* final flag: write the end mark when the report is closed */
};

/* Bytes of a path, a name or a directory, terminator included. */
enum { SIT_PATH_BYTES = 256 };

/* Bytes of a formatted message, terminator included. */
enum { SIT_MESSAGE_BYTES = 4096 };

#endif
