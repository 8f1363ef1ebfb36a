#include "files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>

namespace sit {
namespace {

bool is_device(int fd) noexcept {
  struct stat status {};
  if (::fstat(fd, &status) != 0 || S_ISBLK(status.st_mode)) return true;
  const dev_t null_device = makedev(1, 3);
  return S_ISCHR(status.st_mode) && status.st_rdev != null_device;
}

}  // namespace

UniqueFd open_for_reading(const char* path) noexcept {
  UniqueFd file{::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY)};
  if (file.is_open() && is_device(file.get())) {
    file.reset();
    errno = EINVAL;
  }
  return file;
}

UniqueFile open_for_writing(const char* path, Existing existing) noexcept {
  constexpr mode_t kReadableByAll = 0666;
  const bool appends = existing == Existing::kAppend;
  const int flags = O_WRONLY | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  UniqueFd file{::open(path, flags | (appends ? O_APPEND : O_TRUNC), kReadableByAll)};
  if (!file.is_open()) return {};
  // Only the opening must not wait; a full pipe may.
  ::fcntl(file.get(), F_SETFL, ::fcntl(file.get(), F_GETFL) & ~O_NONBLOCK);
  UniqueFile stream{::fdopen(file.get(), appends ? "a" : "w")};
  if (stream != nullptr) static_cast<void>(file.release());
  return stream;
}

std::size_t read_some(int fd, char* bytes, std::size_t count) noexcept {
  for (;;) {
    const ssize_t got = ::read(fd, bytes, count);
    if (got >= 0) return static_cast<std::size_t>(got);
    if (errno != EINTR) return 0;
  }
}

std::size_t size_to_read(int fd) noexcept {
  struct stat status {};
  const bool is_known = ::fstat(fd, &status) == 0 && status.st_size > 0;
  return is_known ? static_cast<std::size_t>(status.st_size) : SIZE_MAX;
}

std::size_t read_up_to(int fd, char* bytes, std::size_t count) noexcept {
  std::size_t held = 0;
  while (held < count) {
    const std::size_t got = read_some(fd, bytes + held, count - held);
    if (got == 0) break;
    held += got;
  }
  return held;
}

}  // namespace sit
