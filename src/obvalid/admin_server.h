// The admin server of an installation: whether there is one, and where it works.
#pragma once

#include "sit/pelver.h"
#include "situtil/lines.h"
#include "situtil/path.h"

namespace sit::obvalid {

// Where the installation's own plugins file would be. Empty for a kind or release without one, and
// when the path does not fit; the report says so.
[[nodiscard]] LineText default_plugins_file(const PHMVER& record) noexcept;

// The same whatever its kind, the release being 9 or later.
[[nodiscard]] LineText own_plugins_file(const PHMVER& record) noexcept;

// As FindAdminServer.
[[nodiscard]] bool has_admin_server(const char* version) noexcept;

// The first plain installation of the version; null when there is none.
[[nodiscard]] PHMVER* find_plain_installation(const char* version) noexcept;

// A work directory is the environment's own text, or found in the control script, or unknown.
struct WorkDirectory {
  const char* given = nullptr;
  Path found;

  [[nodiscard]] bool is_known() const noexcept { return given != nullptr || !found.empty(); }
  [[nodiscard]] const char* c_str() const noexcept {
    return given != nullptr ? given : found.c_str();
  }
};

// As GetAdmSrvWrkDir.
[[nodiscard]] WorkDirectory find_work_directory(const char* version) noexcept;

}  // namespace sit::obvalid
