/* The session: one process-wide record shared by all commands, and the switches. The
 * library is single-threaded: call one function at a time. */
#ifndef SIT_SESSION_H
#define SIT_SESSION_H

#include <stdint.h>

#include "sit/codes.h"
#include "sit/export.h"

SIT_BEGIN_C

/* Who and where the machine is, and what all commands share. */
typedef struct SitSession {
  char userName[SIT_PATH_BYTES];  /* login name of the real user; empty when it has none */
  char hostName[SIT_PATH_BYTES];  /* as gethostname gives it; empty when unknown */
  char reportDir[SIT_PATH_BYTES]; /* directory of the open report; empty while none is open */
  char *errorText;                /* recorded error lines; owned by the session */
  char osVersion[SIT_PATH_BYTES]; /* operating-system version text, ends in a newline */
  char *versionsText;             /* messages of the last discovery; null before the first;
                                     owned by the session */
  uint32_t osFlags;               /* operating-system kinds; always 0 on Unix */
} SitSession;

struct PHMVER;

/* An operation that different callers give different arguments, or none at all. */
typedef int (*SitOpenOperation)(SIT_ANY_ARGUMENTS);

/* What differs between operating systems, slots 0 to 7 in this order. */
typedef struct PlatformOps {
  int (*FindInstallation)(void);           /* 0 found, 1 PHM not set, 2 version file missing */
  int (*WriteOSVersion)(char *buffer);     /* fills 256 bytes; returns the length */
  int (*ListEnvironment)(void);            /* into the open report */
  SitOpenOperation PrepareConfigName;      /* ("PELCFG", struct PHMVER *) */
  int (*ListSystem)(int16_t section);      /* into the open report */
  SitOpenOperation ListFurtherVersions;    /* (NULL, 0) */
  SitOpenOperation ListFurtherEnvironment; /* () */
  SitOpenOperation Reserved;               /* never called */
} PlatformOps;

/* The session; null until a command has initiated it. Never freed. */
extern SIT_API SitSession *pc;

/* 1 once the session is complete, else 0. */
extern SIT_API int32_t IsInitiated;

/* Non-zero: verbose messages are written. Set by SetVerboseMode. */
extern SIT_API int32_t IsVerbose;

/* Non-zero: work without any installation. Set by SetPelloranIndependent. */
extern SIT_API int32_t nopel;

/* The platform operations in use; null until initiation points it at sitfunctbl. */
extern SIT_API PlatformOps *p_sitfunctbl;

/* The login name of the process's real user, from the password database (getuid, getpwuid).
 * Returns a text owned by the system library, valid until its next look-up; an empty text when
 * the user has no entry. */
SIT_API const char *getusername(void) SIT_NOEXCEPT;

/* Writes the host name (gethostname) into `buffer`, at least 255 bytes.
 * Returns 0, or 1 when the name cannot be had; the buffer is then empty. */
SIT_API int getHost(char *buffer) SIT_NOEXCEPT;

SIT_END_C

#endif
