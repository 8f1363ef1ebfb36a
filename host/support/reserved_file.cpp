#include "support/reserved_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace host {

ReservedFile::ReservedFile(const OutputFolder& folder, const std::string& name, off_t size)
    : file_(folder.create(name)) {
  constexpr off_t kLeast = 4096;
  for (; file_.is_open() && size >= kLeast; size /= 2) {
    if (::fallocate(file_.get(), FALLOC_FL_KEEP_SIZE, 0, size) == 0 || errno != ENOSPC) break;
  }
}

bool ReservedFile::write(const std::string& text) const {
  if (!file_.is_open()) return false;
  std::size_t written = 0;
  while (written < text.size()) {
    const ssize_t got = ::pwrite(file_.get(), text.data() + written, text.size() - written,
                                 static_cast<off_t>(written));
    if (got <= 0) break;
    written += static_cast<std::size_t>(got);
  }
  const bool is_whole = written == text.size();
  return ::ftruncate(file_.get(), is_whole ? static_cast<off_t>(written) : 0) == 0 && is_whole;
}

}  // namespace host
