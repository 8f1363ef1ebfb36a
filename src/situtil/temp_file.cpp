#include "situtil/temp_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "commutils/views.h"
#include "session.h"
#include "signals.h"
#include "sit/situtil.h"

namespace {

constexpr off_t kRoom = 4096;

std::string_view default_directory() noexcept {
  const char* named = ::secure_getenv("TMPDIR");
  return !sit::is_missing(named) && S_ISDIR(FileExists(named)) ? named : "/tmp";
}

// One step finds the name and makes the file.
sit::UniqueFd make_file(std::string_view directory, sit::HeapText& name) noexcept {
  const std::string_view slash = directory.ends_with('/') ? "" : "/";
  name = sit::concatenate({directory, slash, "sitXXXXXX"});
  if (name == nullptr) return {};
  sit::UniqueFd file{::mkostemp(name.get(), O_CLOEXEC)};
  if (!file.is_open()) name.reset();
  return file;
}

// Reserves room from the offset on. Returns 0, or the file system's error.
int reserve(int fd, off_t offset, off_t bytes) noexcept {
  const sit::QuietWriting quiet{sit::may_raise_signals(fd)};
  int result = 0;
  do {
    result = ::fallocate(fd, FALLOC_FL_KEEP_SIZE, offset, bytes);
  } while (result != 0 && errno == EINTR);
  if (result == 0) return 0;
  if (errno != EOPNOTSUPP && errno != ENOSYS) return errno;
  // A file system that reserves nothing: its last byte shows it.
  return ::pwrite(fd, "", 1, offset + bytes - 1) == 1 ? 0 : errno;
}

// A name under which a file could be made, and was removed again.
sit::HeapText name_in(std::string_view directory) noexcept {
  sit::HeapText name;
  if (make_file(directory, name).is_open()) ::unlink(name.get());
  return name;
}

}  // namespace

namespace sit {

TempFile::TempFile() noexcept {
  if (!make_in(default_directory()) && report_is_open()) {
    static_cast<void>(make_in(pc->reportDir));
  }
}

bool TempFile::make_in(std::string_view directory) noexcept {
  file_ = make_file(directory, name_);
  if (!file_.is_open()) return false;
  if (reserve(file_.get(), 0, kRoom) == 0 && ::ftruncate(file_.get(), 0) == 0) return true;
  remove();
  return false;
}

void TempFile::remove() noexcept {
  if (name_ != nullptr) ::unlink(name_.get());
  name_.reset();
  file_.reset();
}

int TempFile::growth_error() const noexcept {
  struct stat status {};
  if (::fstat(file_.get(), &status) != 0) return errno;
  const int error = reserve(file_.get(), status.st_size, kRoom);
  // Below a limit there may be room for less.
  return error == EFBIG ? reserve(file_.get(), status.st_size, 1) : error;
}

}  // namespace sit

extern "C" char* GetTempFile() noexcept {
  sit::HeapText name = name_in(default_directory());
  if (name == nullptr && sit::report_is_open()) name = name_in(pc->reportDir);
  return name.release();
}

extern "C" unsigned int FileExists(const char* path) noexcept {
  struct stat status {};
  if (path == nullptr) {
    errno = EFAULT;
    return 0;
  }
  return ::stat(path, &status) == 0 ? status.st_mode : 0;
}
