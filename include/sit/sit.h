/* Everything that libsit.so offers. A host loads the library with dlopen and takes the addresses
 * of these names with dlsym; the declarations give it their types. */
#ifndef SIT_SIT_H
#define SIT_SIT_H

#include "sit/codes.h"
#include "sit/commfile.h"
#include "sit/commutils.h"
#include "sit/export.h"
#include "sit/javaver.h"
#include "sit/obvalid.h"
#include "sit/pelsec.h"
#include "sit/pelver.h"
#include "sit/prodlic.h"
#include "sit/session.h"
#include "sit/sitexec.h"
#include "sit/situtil.h"
#include "sit/unixsit.h"
#include "sit/usysinfo.h"
#include "sit/websvr.h"

#endif
