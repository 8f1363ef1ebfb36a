/* The Java runtimes that the installations use. Both write into the open report. */
#ifndef SIT_JAVAVER_H
#define SIT_JAVAVER_H

#include "sit/export.h"
#include "sit/pelver.h"

SIT_BEGIN_C

/* Writes the versions of the runtime and development kit and the class path of one installation,
 * by running its Java programs (LogCmdOutput). Takes JREHOME, JDKHOME and JVMEXE from the
 * environment when JREHOME is set there, else from the installation's script bin/java_env. */
SIT_API void getJavaInfo(PHMVER *record) SIT_NOEXCEPT;

/* Writes the version of the machine's Java: that of JAVA_HOME, else that of the search path. */
SIT_API void getJavaInfoSystem(void) SIT_NOEXCEPT;

SIT_END_C

#endif
