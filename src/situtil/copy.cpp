// Copying a file, or only the end of a large one.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <limits>

#include "files.h"
#include "handles.h"
#include "sit/codes.h"
#include "sit/situtil.h"

namespace {

constexpr off_t kTrimmedSize = 1048576;
constexpr std::size_t kBlock = 1020;

// A source that goes on growing, as a log may, is read no further than to its size at the opening.
// A size of 0 says nothing: files under /proc have it.
off_t left_to_read(FILE* source, off_t size, bool trims) noexcept {
  if (size > 0) return size - ::ftello(source);
  return trims ? kTrimmedSize : std::numeric_limits<off_t>::max();
}

void skip_to_trimmed_part(FILE* source, FILE* destination, off_t size) noexcept {
  if (size <= kTrimmedSize) return;
  ::fseeko(source, size - kTrimmedSize, SEEK_SET);
  std::fputs("PELINVENTORY:  File trimmed to 1 MB...\n\n", destination);
  int c = 0;
  for (off_t left = kTrimmedSize; left > 0 && c != '\n' && c != EOF; --left) {
    c = ::getc_unlocked(source);
  }
}

void copy_blocks(FILE* source, FILE* destination, off_t left) noexcept {
  std::array<char, kBlock> block;
  while (left > 0 && std::feof(source) == 0) {
    const auto wanted = static_cast<std::size_t>(std::min<off_t>(left, kBlock));
    const std::size_t got = std::fread(block.data(), 1, wanted, source);
    if (got == 0 || (got < wanted && std::feof(source) == 0)) return;
    if (std::fwrite(block.data(), 1, got, destination) == 0) return;
    left -= static_cast<off_t>(got);
  }
}

bool is_regular(const struct stat& status) noexcept { return S_ISREG(status.st_mode); }

// Copying a file onto itself would empty it.
bool is_same_file(const struct stat& source, const char* destination) noexcept {
  struct stat other {};
  return ::stat(destination, &other) == 0 && is_regular(source) && source.st_dev == other.st_dev &&
         source.st_ino == other.st_ino;
}

// Whether a copy that failed may be removed: not a device, and nothing it held before.
bool is_all_ours(FILE* destination) noexcept {
  struct stat status {};
  return ::fstat(::fileno(destination), &status) == 0 && is_regular(status) && status.st_size == 0;
}

}  // namespace

extern "C" int CopyEndOfFile(const char* source, const char* destination, int trim,
                             int append) noexcept {
  if (source == nullptr || destination == nullptr) return SIT_FAILED;
  sit::UniqueFd opened = sit::open_for_reading(source);
  if (!opened.is_open()) return errno;
  struct stat at_opening {};
  if (::fstat(opened.get(), &at_opening) != 0) return errno;
  if (is_same_file(at_opening, destination)) return EINVAL;
  const sit::UniqueFile from{::fdopen(opened.get(), "rb")};
  if (from == nullptr) return errno;
  static_cast<void>(opened.release());
  sit::UniqueFile to = sit::open_for_writing(
      destination, append != 0 ? sit::Existing::kAppend : sit::Existing::kTruncate);
  if (to == nullptr) return errno;
  const bool removable = is_all_ours(to.get());

  errno = 0;
  if (trim != 0) skip_to_trimmed_part(from.get(), to.get(), at_opening.st_size);
  copy_blocks(from.get(), to.get(), left_to_read(from.get(), at_opening.st_size, trim != 0));
  std::fflush(to.get());
  const bool failed = std::ferror(from.get()) != 0 || std::ferror(to.get()) != 0;
  int error = failed ? errno : 0;
  // Some file systems tell only here that they are full.
  if (std::fclose(to.release()) != 0 && error == 0) error = errno;
  if (error != 0 && removable) ::unlink(destination);
  return error;
}
