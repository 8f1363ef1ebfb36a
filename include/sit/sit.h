/* Everything that libsit.so offers. A host loads the library with dlopen and takes the addresses
 * of these names with dlsym; the declarations give it their types.
 *
 *   sitexec.h    the commands: what a host calls first
 *   codes.h      their results and open modes
 *   session.h    the session, the switches, the platform table
 *   commfile.h   the one open report
 *   commutils.h  the message formatter, numbers, texts
 *   situtil.h    running commands, copying and listing files
 *   pelver.h     installations: discovery, versions, selectors
 *   usysinfo.h   sections about the machine
 *   javaver.h    sections about Java
 *   prodlic.h    the product configuration, the files of the monitoring product
 *   pelsec.h     certificates and keys
 *   obvalid.h    brokers, connection manager, admin server and their logs
 *   websvr.h     Netscape/iPlanet and Apache
 *   unixsit.h    the platform operations of Unix
 *   export.h     how all of it is declared, for C and C++ */
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
