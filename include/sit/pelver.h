/* The installations on this machine: one Pelloran installation (found through the environment
 * variable PHM or the launcher /usr/bin/pel) and one Delvon monitoring installation (through
 * DELVONINIT), with their versions. */
#ifndef SIT_PELVER_H
#define SIT_PELVER_H

#include <stdint.h>
#include <stdio.h>

#include "sit/export.h"

SIT_BEGIN_C

/* One installation. Texts belong to the record and may be null. Records live until the process
 * ends. */
typedef struct PHMVER {
  char *version; /* as used for selection and listing, e.g. 10.1B03 */
  char *dir;     /* installation directory */
  int16_t major;
  int16_t minor;
  char *maintLevel; /* never null once the version has been read */
  int16_t servicePack;
  int16_t servicePackMinor; /* temporary fix number */
  int16_t build;
  int32_t bitness; /* 0: not recorded, always so on Unix */
  char *fullVersion;
  uint32_t flags;    /* PK_ bits; none: a plain Pelloran installation */
  char *pluginsFile; /* admin-server plugins file last used */
  char *conmgrFile;  /* connection-manager properties file last used */
  char *wrkDir;      /* admin-server work directory */
  char *initFile;    /* monitoring installation: its init file */
  char *pelVersion;  /* monitoring installation: version of its Pelloran installation */
  struct PHMVER *next;
} PHMVER;

/* Product kind bits of PHMVER.flags. */
enum {
  PK_WEBCLIENT = 1,
  PK_FRAMEWORK = 2,
  PK_MONITOR = 4,       /* what discovery sets; GetAdminServerPluginsFile looks at it alone */
  PK_MONITOR_MASK = 60, /* 4, 8, 16 and 32: any of them makes a monitoring product */
  PK_EXTRA = 64
};

/* Product selectors; any other value selects every record. */
enum {
  SEL_PRODUCT = 1,
  SEL_WEBCLIENT = 2,
  SEL_PRODUCT_AND_WEBCLIENT = 3,
  SEL_FRAMEWORK = 4,
  SEL_MONITOR = 5,
  SEL_EXTRA = 6,
  SEL_FRAMEWORK_AND_EXTRA = 7,
  SEL_ANY = 99
};

/* The installations found, in discovery order; null before the first discovery. */
extern SIT_API PHMVER *pphm;

/* A new record with every text null and every number 0; null when memory runs out. The caller
 * hands it to a list. */
SIT_API PHMVER *createPHMVER(void) SIT_NOEXCEPT;

/* Appends `record` to the list whose head is at `list`. */
SIT_API void addPHMVERToList(PHMVER **list, PHMVER *record) SIT_NOEXCEPT;

/* Discovers the installations into pphm, with the two functions below. Returns the messages of that
 * as a new text that the caller frees: empty when they could not be collected, null only when
 * memory runs out. Relies on a temporary file. */
SIT_API char *GetPhmVers(void) SIT_NOEXCEPT;

/* Finds the Pelloran installation, makes its record the head of `list` and writes the messages to
 * `output`. The records that the list held before are dropped from it, not freed; without an
 * installation the list stays as it was. */
SIT_API void getPelUnixVersions(PHMVER **list, FILE *output) SIT_NOEXCEPT;

/* Finds the Delvon monitoring installation, appends its record to `list` and writes the messages to
 * `output`. */
SIT_API void getDelvonUnixVersions(PHMVER **list, FILE *output) SIT_NOEXCEPT;

/* Reads the installation directory of the monitoring product out of its init file into `buffer`,
 * at least 255 bytes. The file is read in pieces of 254 characters, each of which counts as a line.
 * Returns 0 when a non-empty directory was found; the system error number when the file cannot be
 * opened; else 1. On failure the buffer holds an empty text. */
SIT_API int GetDelvonTarg(const char *init_file, char *buffer) SIT_NOEXCEPT;

/* Fills the version fields of `record` from its version library, else from its version file, and
 * writes the messages to `output`. A `version` that is there already stays. */
SIT_API void getPelVerInfo(PHMVER *record, FILE *output) SIT_NOEXCEPT;

/* The same from the version library at `path`, which is loaded for the time of the call and runs
 * in this process. A file that is not a whole library is not loaded. A full version stays as it was
 * when the library has no such entry point.
 * Returns 1 when it was loaded, else 0; the record is then as it was. */
SIT_API int getPelVerInfoDLL(PHMVER *record, const char *path, FILE *output) SIT_NOEXCEPT;

/* The same from the version file in the record's directory. All numbers become 0 and the
 * maintenance level empty; the version of a Pelloran installation then gives major and minor.
 * Without a version in the file `fullVersion` stays as it was. */
SIT_API void getPelVerInfoFile(PHMVER *record, FILE *output) SIT_NOEXCEPT;

/* Sets major and minor of `record` from a version text such as 10.1B03. Without a point both stay
 * as they were; so does minor when its digits end the text. */
SIT_API void ParseVerString(const char *version, PHMVER *record) SIT_NOEXCEPT;

/* Removes the patch part of a version text in place: 10.1B03 becomes 10.1B. A text without a patch
 * part stays as it was. */
SIT_API void RmPatchInfoPHM(char *version) SIT_NOEXCEPT;

/* 1 when `record` belongs to the product selector, else 0. */
SIT_API int IsCorrectProduct(const PHMVER *record, int selector) SIT_NOEXCEPT;

/* `prefix` followed by the version text without its patch part and its points, and "(64)" or
 * "(32)" for that bitness (-1: as GetBitness says): the name of a file of one installation.
 * Returns a text of the library's that the next call replaces; null when it is longer than 254
 * characters and when memory runs out. */
SIT_API const char *AppendVerLogFile(const char *version, int bitness,
                                     const char *prefix) SIT_NOEXCEPT;

/* 0: this is not Windows. */
SIT_API int Is64BitWindows(void) SIT_NOEXCEPT;

/* The bitness that a version text names: 0 on Unix, where none does. */
SIT_API int GetBitness(const char *version) SIT_NOEXCEPT;

SIT_END_C

#endif
