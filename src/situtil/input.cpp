#include "situtil/input.h"

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>

#include "commfile.h"
#include "files.h"

namespace sit {
namespace {

constexpr std::size_t kMostOfSizeless = std::size_t{16} << 20U;

// The size of a file; 0 when it says nothing. Some files under /proc claim terabytes.
std::size_t told_size(int fd) noexcept {
  struct stat status {};
  if (::fstat(fd, &status) != 0 || status.st_size <= 0) return 0;
  const auto size = static_cast<std::size_t>(status.st_size);
  struct statfs system {};
  const bool is_made_up =
      size > kMostOfSizeless && ::fstatfs(fd, &system) == 0 && system.f_type == PROC_SUPER_MAGIC;
  return is_made_up ? 0 : size;
}

}  // namespace

Input::Input(int fd, const char* name) noexcept : fd_(fd), left_(told_size(fd)), name_(name) {
  is_sizeless_ = left_ == 0;
  if (is_sizeless_) left_ = kMostOfSizeless;
}

Input::Input(const TempFile& file) noexcept
    : fd_(file.fd()), left_(static_cast<std::size_t>(file.size())), offset_(0) {}

std::size_t Input::fetch(char* bytes, std::size_t count) noexcept {
  errno = 0;
  const std::size_t got =
      offset_ < 0 ? read_some(fd_, bytes, count) : read_some_at(fd_, bytes, count, offset_);
  if (got == 0) error_ = errno;
  if (offset_ >= 0) offset_ += static_cast<off_t>(got);
  return got;
}

std::size_t Input::read(char* bytes, std::size_t count) noexcept {
  if (left_ == 0) {
    if (is_sizeless_ && name_ != nullptr) look_for_more();
    return 0;
  }
  const std::size_t got = fetch(bytes, std::min(count, left_));
  left_ -= got;
  return got;
}

bool Input::tells_size() noexcept {
  std::array<char, 512> some;
  return !is_sizeless_ || fetch(some.data(), some.size()) == 0;
}

void Input::look_for_more() noexcept {
  std::array<char, 512> more;  // some files give no single bytes
  is_sizeless_ = false;
  if (fetch(more.data(), more.size()) > 0) {
    log("\nWARNING: Only the first %d bytes of %s were read.\n", static_cast<int>(kMostOfSizeless),
        name_);
  }
  error_ = 0;
}

void log_if_cut_off(const Input& input, const char* name) noexcept {
  if (input.error() == 0) return;
  log("\nERROR: Reading %s failed before its end, errno = %d\n", name, input.error());
}

void Input::send_to(int destination) noexcept {
  while (!is_sizeless_ && left_ > 0) {
    const ssize_t sent = ::copy_file_range(fd_, nullptr, destination, nullptr, left_, 0);
    if (sent < 0 && errno == EINTR) continue;
    if (sent <= 0) return;
    left_ -= static_cast<std::size_t>(sent);
  }
}

}  // namespace sit
