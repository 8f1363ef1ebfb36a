// "sit diff": what has changed from one collection to another.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace host {

struct DiffOptions {
  std::filesystem::path old_bundle;
  std::filesystem::path new_bundle;
  std::vector<std::string> rules;  // more files of what does not matter
};

// Returns the exit status: 0 when nothing has changed, 1 when something has. Throws Failure for
// what cannot be read.
int diff(const DiffOptions& options);

}  // namespace host
