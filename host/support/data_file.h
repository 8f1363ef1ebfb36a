// The files that come with the program, and what people add to them.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace host {

// Where a file of this name stands: beside the program, where it is installed, or in /etc/sit,
// where people may change it. Throws Failure.
[[nodiscard]] std::filesystem::path data_file(const std::string& name);

// That file, those named *.yaml in /etc/sit/`folder`, in order, then `more`.
[[nodiscard]] std::vector<std::filesystem::path> data_files(const std::string& name,
                                                            const std::string& folder,
                                                            const std::vector<std::string>& more);

}  // namespace host
