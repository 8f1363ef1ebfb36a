#include "situtil/temp_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "commutils/views.h"
#include "file_status.h"
#include "session.h"
#include "signals.h"

namespace sit {
namespace {

constexpr off_t kRoom = 4096;

std::string_view default_directory() noexcept {
  const char* named = ::secure_getenv("TMPDIR");
  return !is_missing(named) && S_ISDIR(file_mode(named)) ? named : "/tmp";
}

// One step finds the name and makes the file.
UniqueFd make_file(std::string_view directory, HeapText& name) noexcept {
  const std::string_view slash = directory.ends_with('/') ? "" : "/";
  name = concatenate({directory, slash, "sitXXXXXX"});
  if (name == nullptr) return {};
  UniqueFd file{::mkostemp(name.get(), O_CLOEXEC)};
  if (!file.is_open()) name.reset();
  return file;
}

// Writes a byte, which takes room there. Returns 0, or the file system's error.
int write_byte(int fd, off_t offset) noexcept {
  const QuietWriting quiet{may_raise_signals(fd)};
  for (;;) {
    if (::pwrite(fd, "", 1, offset) == 1) return 0;
    if (errno != EINTR) return errno;
  }
}

// Tried out with another file: emptying one again is costly.
bool has_room(std::string_view directory) noexcept {
  HeapText name;
  UniqueFd file = make_file(directory, name);
  if (!file.is_open()) return false;
  const int error = write_byte(file.get(), kRoom - 1);
  // Some file systems tell only here that they are full.
  const bool is_written = ::close(file.release()) == 0 && error == 0;
  ::unlink(name.get());
  return is_written;
}

// A name under which a file could be made, and was removed again.
HeapText name_in(std::string_view directory) noexcept {
  HeapText name;
  if (make_file(directory, name).is_open()) ::unlink(name.get());
  return name;
}

}  // namespace

TempFile::TempFile() noexcept {
  if (!make_in(default_directory()) && report_is_open()) {
    static_cast<void>(make_in(pc->reportDir));
  }
}

bool TempFile::make_in(std::string_view directory) noexcept {
  if (!has_room(directory)) return false;
  file_ = make_file(directory, name_);
  return file_.is_open();
}

void TempFile::remove() noexcept {
  if (name_ != nullptr) ::unlink(name_.get());
  name_.reset();
  file_.reset();
}

int TempFile::seal() noexcept {
  struct stat status {};
  if (::fstat(file_.get(), &status) != 0) return errno;
  size_ = status.st_size;
  const int error = write_byte(file_.get(), size_ + kRoom - 1);
  // Below a limit there may be room for less.
  return error == EFBIG ? write_byte(file_.get(), size_) : error;
}

HeapText temp_file_name() noexcept {
  HeapText name = name_in(default_directory());
  if (name == nullptr && report_is_open()) name = name_in(pc->reportDir);
  return name;
}

}  // namespace sit
