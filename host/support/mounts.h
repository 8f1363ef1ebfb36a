// The mounted file systems and the room on them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace host {

struct Mount {
  unsigned long id = 0;
  std::string point;
  std::string type;
};

[[nodiscard]] std::vector<Mount> mounts();

// "/mnt/data (ext4)", for the file system that the open file or folder lies on.
[[nodiscard]] std::string file_system_of(int fd);

// The room on the file system of an open folder. Made by a system call only, so that a signal
// handler may ask.
struct Room {
  explicit Room(int folder) noexcept;

  // Not even room for one more block of this many bytes.
  [[nodiscard]] bool is_short_for(std::uint64_t more) const noexcept;

  std::uint64_t bytes = UINT64_MAX;
  bool has_inodes = true;
};

}  // namespace host
