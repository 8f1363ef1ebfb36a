#include "support/mounts.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <sstream>

namespace host {
namespace {

// Blanks and the like stand as a backslash and three octal digits.
std::string unescaped(const std::string& text) {
  constexpr std::size_t kDigits = 3;
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool is_escaped = text[i] == '\\' && i + kDigits < text.size();
    plain += is_escaped ? static_cast<char>(std::stoi(text.substr(i + 1, kDigits), nullptr, 8))
                        : text[i];
    if (is_escaped) i += kDigits;
  }
  return plain;
}

}  // namespace

std::vector<Mount> mounts() {
  std::vector<Mount> found;
  std::ifstream table("/proc/self/mountinfo");
  for (std::string line; std::getline(table, line);) {
    std::istringstream fields(line);
    Mount mount;
    std::string skipped;
    fields >> mount.id >> skipped >> skipped >> skipped >> mount.point;
    while (fields >> skipped && skipped != "-") {
    }
    fields >> mount.type;
    mount.point = unescaped(mount.point);
    found.push_back(mount);
  }
  return found;
}

std::string file_system_of(int fd) {
  struct statx status {};
  if (::statx(fd, "", AT_EMPTY_PATH, STATX_MNT_ID, &status) == 0) {
    for (const Mount& mount : mounts()) {
      if (mount.id == status.stx_mnt_id) return mount.point + " (" + mount.type + ")";
    }
  }
  return "the file system of the output folder";
}

Room::Room(int folder) noexcept {
  struct statfs status {};
  if (::fstatfs(folder, &status) != 0 || status.f_blocks == 0) return;
  const auto blocks = ::geteuid() == 0 ? status.f_bfree : status.f_bavail;
  bytes = blocks * static_cast<std::uint64_t>(status.f_bsize);
  has_inodes = status.f_files == 0 || status.f_ffree > 0;
}

bool Room::is_short_for(std::uint64_t more) const noexcept {
  constexpr std::uint64_t kBlock = 4096;
  return bytes < std::max(more, kBlock) || !has_inodes;
}

}  // namespace host
