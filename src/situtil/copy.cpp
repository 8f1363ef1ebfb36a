// Copying a file, or only the end of a large one.
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "files.h"
#include "handles.h"
#include "sit/codes.h"
#include "sit/situtil.h"

namespace {

constexpr off_t kTrimmedSize = 1048576;
constexpr std::size_t kBlock = 1020;

void skip_to_trimmed_part(FILE* source, FILE* destination) noexcept {
  struct stat status {};
  if (::fstat(::fileno(source), &status) != 0 || status.st_size <= kTrimmedSize) return;
  ::fseeko(source, status.st_size - kTrimmedSize, SEEK_SET);
  std::fputs("PELINVENTORY:  File trimmed to 1 MB...\n\n", destination);
  for (int c = std::getc(source); c != '\n' && c != EOF;) c = std::getc(source);
}

void copy_blocks(FILE* source, FILE* destination) noexcept {
  std::array<char, kBlock> block;
  while (std::feof(source) == 0) {
    const std::size_t got = std::fread(block.data(), 1, block.size(), source);
    if (got == 0 || (got < block.size() && std::feof(source) == 0)) return;
    if (std::fwrite(block.data(), 1, got, destination) == 0) return;
  }
}

bool is_regular(const struct stat& status) noexcept { return S_ISREG(status.st_mode); }

// Copying a file onto itself would empty it, or feed it to itself without end.
bool is_same_file(int source, const char* destination) noexcept {
  struct stat first {};
  struct stat second {};
  return ::fstat(source, &first) == 0 && ::stat(destination, &second) == 0 && is_regular(first) &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
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
  if (is_same_file(opened.get(), destination)) return EINVAL;
  const sit::UniqueFile from{::fdopen(opened.get(), "rb")};
  if (from == nullptr) return errno;
  static_cast<void>(opened.release());
  sit::UniqueFile to = sit::open_for_writing(
      destination, append != 0 ? sit::Existing::kAppend : sit::Existing::kTruncate);
  if (to == nullptr) return errno;
  const bool removable = is_all_ours(to.get());

  errno = 0;
  if (trim != 0) skip_to_trimmed_part(from.get(), to.get());
  copy_blocks(from.get(), to.get());
  std::fflush(to.get());
  const bool failed = std::ferror(from.get()) != 0 || std::ferror(to.get()) != 0;
  const int error = failed ? errno : 0;
  to.reset();
  if (error != 0 && removable) ::unlink(destination);
  return error;
}
