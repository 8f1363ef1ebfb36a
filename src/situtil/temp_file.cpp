#include "situtil/temp_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>

#include "commutils/views.h"
#include "handles.h"
#include "session.h"

namespace {

std::string_view default_directory() noexcept {
  const char* named = ::secure_getenv("TMPDIR");
  return !sit::is_missing(named) && S_ISDIR(FileExists(named)) ? named : "/tmp";
}

// One step finds the name and shows that a file can be made under it.
sit::HeapText name_in(std::string_view directory) noexcept {
  const std::string_view slash = directory.ends_with('/') ? "" : "/";
  sit::HeapText name = sit::concatenate({directory, slash, "sitXXXXXX"});
  if (name == nullptr) return name;
  const sit::UniqueFd probe{::mkostemp(name.get(), O_CLOEXEC)};
  if (!probe.is_open()) {
    name.reset();
  } else {
    ::unlink(name.get());
  }
  return name;
}

}  // namespace

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
