#include "files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <concepts>
#include <cstdio>
#include <utility>

namespace sit {
namespace {

// For a file under a lease the opening that does not wait fails. One that waits is then safe if the
// file is a regular one; it goes to that very file, whatever its name stands for meanwhile.
UniqueFd open_leased(const char* path, int flags) noexcept {
  UniqueFd file;
  const UniqueFd found{::open(path, O_PATH | O_CLOEXEC)};
  struct stat status {};
  if (!found.is_open() || ::fstat(found.get(), &status) != 0) return file;
  if (!S_ISREG(status.st_mode)) {
    errno = EAGAIN;
    return file;
  }
  std::array<char, 32> name{};
  std::snprintf(name.data(), name.size(), "/proc/self/fd/%d", found.get());
  do {
    file.reset(::open(name.data(), flags & ~O_CREAT));
  } while (!file.is_open() && errno == EINTR);
  return file;
}

UniqueFd open_calmly(const char* path, int flags) noexcept {
  constexpr mode_t kReadableByAll = 0666;
  flags |= O_CLOEXEC | O_NOCTTY;
  UniqueFd file{::open(path, flags | O_NONBLOCK, kReadableByAll)};
  return file.is_open() || errno != EAGAIN ? std::move(file) : open_leased(path, flags);
}

bool is_device(int fd) noexcept {
  struct stat status {};
  if (::fstat(fd, &status) != 0 || S_ISBLK(status.st_mode)) return true;
  const dev_t null_device = makedev(1, 3);
  return S_ISCHR(status.st_mode) && status.st_rdev != null_device;
}

// What a reading call gives, 0 when it fails.
template <std::invocable Read>
std::size_t resumed(Read read) noexcept {
  for (;;) {
    const ssize_t got = read();
    if (got >= 0) return static_cast<std::size_t>(got);
    if (errno != EINTR) return 0;
  }
}

}  // namespace

UniqueFd open_for_reading(const char* path) noexcept {
  UniqueFd file = open_calmly(path, O_RDONLY);
  if (file.is_open() && is_device(file.get())) {
    file.reset();
    errno = EINVAL;
  }
  return file;
}

UniqueFd open_for_writing(const char* path, Existing existing) noexcept {
  int way = O_WRONLY | O_CREAT;
  if (existing == Existing::kTruncate) way |= O_TRUNC;
  if (existing == Existing::kAppend) way |= O_APPEND;
  UniqueFd file = open_calmly(path, way);
  // Only the opening must not wait; a full pipe may.
  if (file.is_open()) ::fcntl(file.get(), F_SETFL, ::fcntl(file.get(), F_GETFL) & ~O_NONBLOCK);
  return file;
}

bool write_all(int fd, std::string_view bytes) noexcept {
  while (!bytes.empty()) {
    const ssize_t written = ::write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

std::size_t read_some(int fd, char* bytes, std::size_t count) noexcept {
  return resumed([&] { return ::read(fd, bytes, count); });
}

std::size_t read_some_at(int fd, char* bytes, std::size_t count, off_t offset) noexcept {
  return resumed([&] { return ::pread(fd, bytes, count, offset); });
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
