// Commands that are captured on every machine, as files of rules tell of them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host {

struct ExtraCapture {
  std::string name;  // of its row and file
  std::string title;
  std::string command;
  std::string tool;       // the program without which there is nothing to run
  double limit = 0;       // seconds; 0: that of every command
  std::uint64_t cap = 0;  // bytes that its file may have; 0: those of every file
  bool needs_root = false;
};

// Those that come with the program and those of /etc/sit/capture.d, unless they are not wanted,
// then those of these files. A later one replaces an earlier one of its name. Throws UsageError,
// naming file and capture, for one that cannot be used.
[[nodiscard]] std::vector<ExtraCapture> load_captures(bool with_usual,
                                                      const std::vector<std::string>& more);

}  // namespace host
