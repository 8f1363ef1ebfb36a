// What a finished collection holds, and how much of it goes home.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/folder.h"

namespace host {

// In bytes.
struct Caps {
  std::uint64_t file = std::uint64_t{100} << 20U;
  std::uint64_t all = std::uint64_t{1} << 30U;
};

// A file that was longer than it may be: its middle is left out, and a line stands there instead.
struct Cut {
  std::string file;
  std::uint64_t bytes;     // that it had
  std::uint64_t left_out;  // 0: it could not be cut
};

// Something that cannot go home: a link or FIFO, or what cannot be read.
struct Absent {
  std::string name;
  std::string why;
};

struct Contents {
  std::vector<std::string> files;  // by their path below the folder
  std::vector<Cut> cuts;
  std::vector<Absent> absent;
};

// Lists what is in the folder, and cuts what is too long. So that all of it keeps to its cap, the
// longest files are cut, all to the same length.
[[nodiscard]] Contents settle(const OutputFolder& folder, const Caps& caps);

}  // namespace host
