// "sit fleet": one page about the collections of many machines.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace host {

struct FleetOptions {
  std::filesystem::path folder;    // of archives and folders of collections
  std::filesystem::path output;    // empty: the same
  std::vector<std::string> rules;  // more files of what makes findings alike
};

// Writes fleet.txt, fleet.html and fleet.json. Returns the exit status: 1 when a machine is missing
// or its collection is not complete. Throws Failure when nothing could be made.
int fleet(const FleetOptions& options);

}  // namespace host
