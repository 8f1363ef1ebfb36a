#include "support/reserved_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace host {

ReservedFile::ReservedFile(const OutputFolder& folder, const std::string& name, off_t size)
    : folder_(folder), name_(name), file_(folder.create(name)) {
  constexpr off_t kLeast = 4096;
  for (; file_.is_open() && size >= kLeast; size /= 2) {
    if (::fallocate(file_.get(), FALLOC_FL_KEEP_SIZE, 0, size) == 0 || errno != ENOSPC) break;
  }
}

bool ReservedFile::write(const std::string& text) {
  struct stat status {};
  const bool is_there =
      file_.is_open() && ::fstat(file_.get(), &status) == 0 && status.st_nlink > 0;
  if (!is_there) {  // a product has removed it, or put something else in its place
    folder_.remove(name_);
    file_ = folder_.create(name_);
  }
  std::size_t written = 0;
  while (file_.is_open() && written < text.size()) {
    const ssize_t got = ::pwrite(file_.get(), text.data() + written, text.size() - written,
                                 static_cast<off_t>(written));
    if (got <= 0) break;
    written += static_cast<std::size_t>(got);
  }
  const bool is_whole = file_.is_open() && written == text.size();
  if (!is_whole) error_ = errno;
  const off_t length = is_whole ? static_cast<off_t>(written) : 0;
  return file_.is_open() && ::ftruncate(file_.get(), length) == 0 && is_whole;
}

}  // namespace host
