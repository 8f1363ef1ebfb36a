#include "sit/unixsit.h"

#include "sit/usysinfo.h"
#include "unixsit.h"

extern "C" {

constinit PlatformOps sitfunctbl = {
    .FindInstallation = FindPelInstUnix,
    .WriteOSVersion = GetUnixVers,
    .ListEnvironment = GetEnvVarUnix,
    .PrepareConfigName = sitIntegerNoOp,
    .ListSystem = GetUnixSysInfo,
    .ListFurtherVersions = sitIntegerNoOp,
    .ListFurtherEnvironment = sitIntegerNoOp,
    .Reserved = sitIntegerNoOp,
};

int FindPelInstUnix() noexcept { return sit::unixsit::find_installation(); }

int GetUnixVers(char* buffer) noexcept {
  return buffer == nullptr ? 0 : sit::unixsit::write_os_version(buffer);
}

int GetEnvVarUnix() noexcept { return sit::unixsit::list_environment() ? 0 : 1; }

int sitIntegerNoOp(...) noexcept { return 0; }

}  // extern "C"
