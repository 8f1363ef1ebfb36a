/* System information: sections made by the first of several commands that succeeds. All
 * functions write into the open report. */
#ifndef SIT_USYSINFO_H
#define SIT_USYSINFO_H

#include <stdint.h>

#include "sit/export.h"

SIT_BEGIN_C

/* The commands of each section in the order in which they are tried, ended by a null entry. The
 * host may replace entries. */
extern SIT_API const char *MACHLST[];   /* machine */
extern SIT_API const char *ULIMITLST[]; /* resource limits */
extern SIT_API const char *SWAPLST[];   /* swap space */
extern SIT_API const char *MNTLST[];    /* mounts */
extern SIT_API const char *DSKLST[];    /* disk space */
extern SIT_API const char *SYSTABLST[]; /* system tables */
extern SIT_API const char *KNLLST[];    /* kernel settings */
extern SIT_API const char *SEMLST[];    /* semaphores */
extern SIT_API const char *SHMLST[];    /* shared memory */
extern SIT_API const char *PRDLST[];    /* installed packages */
extern SIT_API const char *PROCLST[];   /* processes */
extern SIT_API const char *NETLST[];    /* network status */
extern SIT_API const char *PCHLST[];    /* patches; empty */

/* Writes all sections when `section` is 0, nothing otherwise. The result carries no meaning. */
SIT_API int GetUnixSysInfo(int16_t section) SIT_NOEXCEPT;

/* Writes a section from the first command of `list` that exits with 0, trying at most `limit` of
 * them; names the commands that were tried when none does. At most 60 seconds a command. */
SIT_API void execcmdlist(const char *title, const char *list[], int limit) SIT_NOEXCEPT;

/* Writes a section from what `command` prints, whatever its exit status. */
SIT_API void execonecmd(const char *title, const char *command) SIT_NOEXCEPT;

SIT_END_C

#endif
