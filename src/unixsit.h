// The Unix platform operations.
#pragma once

namespace sit::unixsit {

// As FindPelInstUnix, GetUnixVers and GetEnvVarUnix.
[[nodiscard]] int find_installation() noexcept;
int write_os_version(char* buffer) noexcept;
[[nodiscard]] bool list_environment() noexcept;

}  // namespace sit::unixsit
