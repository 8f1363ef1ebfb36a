// Copying a file, or only the end of a large one.
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "handles.h"
#include "sit/codes.h"
#include "sit/situtil.h"
#include "situtil/piece_reader.h"

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

// Copying a file onto itself would empty it, or feed it to itself without end.
bool is_same_file(const char* path, const char* other) noexcept {
  struct stat first {};
  struct stat second {};
  return ::stat(path, &first) == 0 && ::stat(other, &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

}  // namespace

extern "C" int CopyEndOfFile(const char* source, const char* destination, int trim,
                             int append) noexcept {
  if (source == nullptr || destination == nullptr) return SIT_FAILED;
  sit::UniqueFd source_fd = sit::open_for_reading(source);
  if (!source_fd.is_open()) return errno;
  const sit::UniqueFile from{::fdopen(source_fd.get(), "rb")};
  if (from == nullptr) return errno;
  static_cast<void>(source_fd.release());
  if (is_same_file(source, destination)) return EINVAL;
  const bool adds = append != 0;
  sit::UniqueFile to{std::fopen(destination, adds ? "abe" : "wbe")};
  if (to == nullptr) return errno;

  errno = 0;
  if (trim != 0) skip_to_trimmed_part(from.get(), to.get());
  copy_blocks(from.get(), to.get());
  std::fflush(to.get());
  const bool failed = std::ferror(from.get()) != 0 || std::ferror(to.get()) != 0;
  const int error = failed ? errno : 0;
  to.reset();
  // What the destination held before is worth more than a tidy folder.
  if (error != 0 && !adds) ::unlink(destination);
  return error;
}
