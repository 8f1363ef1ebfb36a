// Copying the log files that a validation has found.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "plugin.h"

namespace host {

// Copies the logs of the installation with this version key into the folder of `report`: those of
// the `names`, or of everything that the validation has found and the admin server when there are
// none. Returns the first result other than success.
[[nodiscard]] int copy_logs(const Plugin& plugin, const std::string& version_key,
                            std::vector<std::string> names, const std::filesystem::path& report);

}  // namespace host
