#include "unixsit.h"

#include <sys/utsname.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "file_status.h"
#include "situtil/capture.h"
#include "situtil/path.h"

namespace sit::unixsit {
namespace {

struct ClosePipe {
  void operator()(FILE* pipe) const noexcept { ::pclose(pipe); }
};
using UniquePipe = std::unique_ptr<FILE, ClosePipe>;

}  // namespace

int find_installation() noexcept {
  const char* directory = std::getenv("PHM");
  if (directory == nullptr) return 1;
  Path path;
  return join_path(path, {directory, "version"}) && exists(path.c_str()) ? 0 : 2;
}

int write_os_version(char* buffer) noexcept {
  utsname names{};
  buffer[0] = '\0';
  if (::uname(&names) != 0) return 0;
  const int length = std::snprintf(buffer, Path::kBytes, "%s %s %s %s %s  \n", names.sysname,
                                   names.nodename, names.release, names.version, names.machine);
  return std::min(length, static_cast<int>(Path::kMaxLength));
}

bool list_environment() noexcept {
  const UniquePipe listing{::popen("set", "re")};
  if (listing == nullptr) return false;
  Input input{::fileno(listing.get()), SIZE_MAX};
  log_input(input);
  return true;
}

}  // namespace sit::unixsit
