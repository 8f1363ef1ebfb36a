// "sit mask": the secrets of a collection that is there already.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace host {

struct RemaskOptions {
  std::filesystem::path bundle;  // folder or archive
  std::vector<std::string> mask_rules;
  std::string format = "xz";
};

// Masks a folder in place, or makes a new archive beside the one that is given; prints its path.
// Returns the exit status. Throws Failure when nothing was made.
int remask(const RemaskOptions& options);

}  // namespace host
