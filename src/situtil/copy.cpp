#include "situtil/copy.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>

#include "commutils/views.h"
#include "files.h"
#include "handles.h"
#include "signals.h"
#include "sit/codes.h"
#include "situtil/input.h"

namespace sit {
namespace {

constexpr off_t kTrimmedSize = 1048576;

// Copying a file onto itself would empty it.
bool is_same_file(const struct stat& source, const char* destination) noexcept {
  struct stat other {};
  return ::stat(destination, &other) == 0 && S_ISREG(other.st_mode) &&
         source.st_dev == other.st_dev && source.st_ino == other.st_ino;
}

bool holds_something(int fd) noexcept {
  struct stat status {};
  return ::fstat(fd, &status) != 0 || status.st_size != 0;
}

// Of a link it is the link that goes; what is no file stays.
void remove_half_copy(const char* destination) noexcept {
  struct stat status {};
  if (::lstat(destination, &status) == 0 && (S_ISREG(status.st_mode) || S_ISLNK(status.st_mode))) {
    ::unlink(destination);
  }
}

// Drops the text up to and with its first newline. False when it has none.
bool drop_line(std::string_view& text) noexcept {
  const std::size_t newline = text.find('\n');
  text = tail(text, newline == std::string_view::npos ? newline : newline + 1);
  return newline != std::string_view::npos;
}

// Copies what the input gives, with `trimmed` from the first line that begins there. Returns 0 or
// the error.
int copy_bytes(Input source, int destination, bool trimmed) noexcept {
  std::array<char, 32768> block;
  if (!trimmed) source.send_to(destination);
  for (;;) {
    const std::size_t got = source.read(block.data(), block.size());
    if (got == 0) return source.error();
    std::string_view text{block.data(), got};
    if (trimmed) trimmed = !drop_line(text);
    if (!write_all(destination, text)) return errno;
  }
}

// A source that goes on growing, as a log may, is read no further than to its size at the opening.
int copy_end(const Input& whole, int source, int destination, off_t size, bool trim) noexcept {
  if (!trim || size <= kTrimmedSize) return copy_bytes(whole, destination, false);
  if (::lseek(source, size - kTrimmedSize, SEEK_SET) < 0 ||
      !write_all(destination, "PELINVENTORY:  File trimmed to 1 MB...\n\n")) {
    return errno;
  }
  return copy_bytes(Input{source, kTrimmedSize}, destination, true);
}

}  // namespace

int copy_end_of_file(const Copy& copy) noexcept {
  if (copy.source == nullptr || copy.destination == nullptr) return SIT_FAILED;
  const UniqueFd from = open_for_reading(copy.source);
  if (!from.is_open()) return errno;
  struct stat at_opening {};
  if (::fstat(from.get(), &at_opening) != 0) return errno;
  if (is_same_file(at_opening, copy.destination)) return EINVAL;
  UniqueFd to = open_for_writing(copy.destination, copy.existing);
  if (!to.is_open()) return errno;
  const bool is_all_ours = !holds_something(to.get());
  const QuietWriting quiet{may_raise_signals(to.get())};
  const Input whole{from.get(), copy.tells ? copy.source : nullptr};
  int error = copy_end(whole, from.get(), to.get(), at_opening.st_size, copy.trims);
  // Some file systems tell only here that they are full.
  if (::close(to.release()) != 0 && error == 0) error = errno;
  if (error != 0 && is_all_ours) remove_half_copy(copy.destination);
  return error;
}

}  // namespace sit
