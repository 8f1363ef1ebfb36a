/* Certificate and key stores of one installation. All functions write into the open report,
 * return 0, and list a store by running the installation's own tools (LogCmdOutput). */
#ifndef SIT_PELSEC_H
#define SIT_PELSEC_H

#include "sit/export.h"
#include "sit/pelver.h"

SIT_BEGIN_C

/* How a certificate is listed, a format of msgsub: tool, store directory, "/", file name. The three
 * words arrive quoted where the shell would interpret them. The host may write another format of at
 * most 24 characters into it. */
extern SIT_API char szSSLCTemp[];

/* The stores of a release before 10.0B: one listing per certificate file. */
SIT_API int LogSecurityInfoPre100B(PHMVER *record) SIT_NOEXCEPT;

/* The stores of a release from 10.0B on: certificates, then keys. */
SIT_API int LogSecurityInfo100B(PHMVER *record) SIT_NOEXCEPT;

/* Lists every certificate file (name ending in ".0") of `store` with the tool at `tool`. A command
 * of more than 255 characters, without what quoting adds, is not run; the report says so. */
SIT_API int getDirCertInfo(const char *tool, const char *store) SIT_NOEXCEPT;

SIT_END_C

#endif
