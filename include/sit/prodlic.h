/* The product configuration of one installation, and the files of the monitoring product. All
 * functions write into the open report. */
#ifndef SIT_PRODLIC_H
#define SIT_PRODLIC_H

#include "sit/export.h"
#include "sit/pelver.h"

SIT_BEGIN_C

/* Writes the configuration listing of an installation (its tool bin/showcfg), then its files
 * installd.ini and addons. Returns 0, or 1 when the path of the installation is too long. */
SIT_API int GetLicenseInfo(PHMVER *record) SIT_NOEXCEPT;

/* Writes the name of the configuration file into `destination`, 256 bytes. Returns 3 when the
 * environment variable PELCFG names it (a value of 255 or more characters leaves the destination
 * as it was), 4 when it follows from the installation; a name of more than 255 characters then
 * leaves the destination empty. */
SIT_API int GenPelCfgName(char *destination, const PHMVER *record) SIT_NOEXCEPT;

/* Writes a recursive listing of the installation directory. Returns 0. */
SIT_API int GetFileListInfo(const PHMVER *record) SIT_NOEXCEPT;

/* Nothing on Unix. Returns 0. */
SIT_API int GetCommonFilesListInfo(void) SIT_NOEXCEPT;

/* Copies the init file of a monitoring installation, its configuration files and the admin-server
 * plugins file of its Pelloran installation into `directory`. Returns 0; what is missing stands in
 * the report. */
SIT_API int CopyDelvon_Files(const char *directory, const PHMVER *record) SIT_NOEXCEPT;

SIT_END_C

#endif
