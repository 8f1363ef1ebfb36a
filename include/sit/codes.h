/* Result codes and open modes shared by all commands. Codes other than these are
 * system error numbers (errno values) passed through from file operations. */
#ifndef SIT_CODES_H
#define SIT_CODES_H

enum {
  SIT_OK = 0,
  SIT_FAILED = -1, /* a command could not be run to its end, or exited with code 1; a required
                      argument other than the report path is missing */
  /* The report path is null or empty; so is the path of a check tool. See also OB_NO_LOCATION. */
  SIT_NO_REPORT_PATH = 10000,
  /* No temporary file could be made; a check tool's command is too long or cannot be started; the
   * server root or the configuration file of a web server does not exist. */
  SIT_NOT_FOUND = 10001,
  SIT_BAD_OPEN_MODE = 10007,   /* the open mode holds neither SIT_CREATE nor SIT_APPEND */
  SIT_PATH_TOO_LONG = 10008,   /* of opening: the report path is longer than 255 characters */
  SIT_NO_INSTALLATION = 10008, /* of GetVersInfo and GetJavaVers: no installation was found; the
                                  report is complete all the same */
  SIT_NO_BROKER_PROPERTIES = 10011, /* the broker properties file is missing or a directory */
  SIT_NO_PLUGINS_FILE = 10012,      /* the admin-server plugins file is missing or a directory */
  SIT_NO_MATCHING_INSTALLATION = 10013, /* no installation matches the version key */
  SIT_NO_CONMGR_PROPERTIES = 10014,     /* the connection-manager file is missing or a directory */
  SIT_NO_SUCH_BROKER = 10015,      /* the check tool does not know the broker, or its name is longer
                                      than 254 characters */
  SIT_VALIDATION_FAILED = 10016,   /* a validation failed or could not be made */
  SIT_PLUGINS_UNREADABLE = 10017,  /* the admin-server plugins file cannot be opened */
  SIT_COPY_FAILED = 10018,         /* a properties file could not be copied */
  SIT_NO_DATABASE_TOOL = 10019,    /* the installation has no tool dbconfig */
  SIT_PROPERTY_NOT_LOADED = 10020, /* a check tool could not load a property */
  SIT_NO_ADMIN_SERVER = 10021,     /* the installation has no admin server */
  SIT_NO_ADMIN_DIRECTORY = 10023,  /* the admin server's work directory was not found */
  SIT_NO_ADMIN_LOGS = 10024,       /* no log file of the admin server could be copied */
  SIT_NO_SERVER = 10025,           /* the server root is empty or holds no server instance */
  SIT_SERVERS_AMBIGUOUS = 10027,   /* more than one instance is meant */
  SIT_NO_SERVER_OF_NAME = 10028,   /* no instance has the server name */
  SIT_NO_SERVER_CONFIG = 10029,    /* the same, and some instance lacks its configuration file */
  SIT_DATABASE_LEFT_OUT = 10030,   /* copied, but for the log of a database of the same name */

  SIT_CREATE = 64,   /* open mode: truncate or create the report and write its header */
  SIT_APPEND = 1024, /* open mode: add to the report; a new file gets the header */

  SIT_FINAL = 1 /* final flag: write the end mark when the report is closed */
};

/* Bytes of a path, a name or a directory, terminator included. */
enum { SIT_PATH_BYTES = 256 };

/* Bytes of a formatted message, terminator included. */
enum { SIT_MESSAGE_BYTES = 4096 };

#endif
