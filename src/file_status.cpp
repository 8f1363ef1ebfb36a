#include "file_status.h"

#include <sys/stat.h>

#include <cerrno>

namespace sit {

unsigned file_mode(const char* path) noexcept {
  struct stat status {};
  if (path == nullptr) {
    errno = EFAULT;
    return 0;
  }
  return ::stat(path, &status) == 0 ? status.st_mode : 0;
}

bool is_directory(unsigned mode) noexcept {
  constexpr unsigned kDirectoryBit = 0x4000;
  return (mode & kDirectoryBit) != 0;
}

}  // namespace sit
