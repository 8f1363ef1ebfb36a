#include "sit/unixsit.h"

#include <sys/utsname.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "sit/situtil.h"
#include "sit/usysinfo.h"
#include "situtil/capture.h"
#include "situtil/path.h"

namespace {

struct ClosePipe {
  void operator()(FILE* pipe) const noexcept { ::pclose(pipe); }
};
using UniquePipe = std::unique_ptr<FILE, ClosePipe>;

}  // namespace

extern "C" {

constinit PlatformOps sitfunctbl = {FindPelInstUnix, GetUnixVers,    GetEnvVarUnix,
                                    sitIntegerNoOp,  GetUnixSysInfo, sitIntegerNoOp,
                                    sitIntegerNoOp,  sitIntegerNoOp};

int FindPelInstUnix() noexcept {
  const char* directory = std::getenv("PHM");
  if (directory == nullptr) return 1;
  sit::Path path;
  return sit::join_path(path, {directory, "version"}) && FileExists(path.c_str()) != 0 ? 0 : 2;
}

int GetUnixVers(char* buffer) noexcept {
  utsname names{};
  if (buffer == nullptr) return 0;
  buffer[0] = '\0';
  if (::uname(&names) != 0) return 0;
  const int length = std::snprintf(buffer, SIT_PATH_BYTES, "%s %s %s %s %s  \n", names.sysname,
                                   names.nodename, names.release, names.version, names.machine);
  return std::min(length, SIT_PATH_BYTES - 1);
}

int GetEnvVarUnix() noexcept {
  const UniquePipe listing{::popen("set", "re")};
  if (listing == nullptr) return 1;
  sit::Input input{::fileno(listing.get()), SIZE_MAX};
  sit::copy_into_report(input);
  return 0;
}

int sitIntegerNoOp(...) noexcept { return 0; }

}  // extern "C"
