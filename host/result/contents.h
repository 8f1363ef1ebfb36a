// What a finished collection holds, and how much of it goes home.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "support/folder.h"

namespace host {

// In bytes.
struct Caps {
  std::uint64_t file = std::uint64_t{100} << 20U;
  std::uint64_t all = std::uint64_t{1} << 30U;
  std::map<std::string, std::uint64_t> own = {};  // of files that are to be shorter
};

// A file that was longer than it may be: its middle is left out, and a line stands there instead.
struct Cut {
  std::string file;
  std::uint64_t bytes;     // that it had
  std::uint64_t left_out;  // 0: it could not be cut
  bool is_meant;           // by a cap of its own: nothing is missed
};

// Something that cannot go home: a link or FIFO, or what cannot be read.
struct Absent {
  std::string name;
  std::string why;
};

// The secrets that were masked.
struct Masking {
  bool is_on = false;
  std::string list = {};                             // the file that tells of them
  std::map<std::string, std::uint64_t> counts = {};  // by rule
  std::vector<std::string> no_texts = {};            // files that cannot be masked
  std::string failed = {};  // the file at which it came to an end, and why; empty: it did not
};

struct Contents {
  std::vector<std::string> files;  // by their path below the folder
  std::vector<Cut> cuts;
  std::vector<Absent> absent;
  Masking masking;
  bool goes_into_archive = true;
};

// What is in the folder.
[[nodiscard]] Contents list(const OutputFolder& folder);

// Cuts what is too long. So that all of it keeps to its cap, the longest files are cut, all to the
// same length.
void cut_to(const Caps& caps, const OutputFolder& folder, Contents& contents);

}  // namespace host
