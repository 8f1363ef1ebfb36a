#include "situtil/library.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "commutils/views.h"
#include "files.h"

namespace sit {
namespace {

bool read_at(int fd, ElfW(Off) offset, void* into, std::size_t count) noexcept {
  return ::pread(fd, into, count, static_cast<off_t>(offset)) == static_cast<ssize_t>(count);
}

bool is_library_header(const ElfW(Ehdr) & header) noexcept {
  return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_type == ET_DYN &&
         header.e_phentsize == sizeof(ElfW(Phdr));
}

bool has_all_segments(int fd, ElfW(Off) size, const ElfW(Ehdr) & header) noexcept {
  for (unsigned i = 0; i < header.e_phnum; ++i) {
    ElfW(Phdr) segment{};
    if (!read_at(fd, header.e_phoff + i * sizeof segment, &segment, sizeof segment)) return false;
    if (segment.p_offset > size || segment.p_filesz > size - segment.p_offset) return false;
  }
  return true;
}

// Why a file must not reach the loader; empty when the loader can judge it itself.
std::string_view danger_in(const char* path) noexcept {
  if (is_missing(path)) return "no library named";  // the loader would take the host itself
  struct stat status {};
  if (::stat(path, &status) != 0) return {};
  // Opening one of these may wait for ever.
  if (S_ISFIFO(status.st_mode) || S_ISCHR(status.st_mode) || S_ISBLK(status.st_mode)) {
    return "not a regular file";
  }
  const UniqueFd file = open_for_reading(path);
  ElfW(Ehdr) header{};
  if (!file.is_open() || !read_at(file.get(), 0, &header, sizeof header) ||
      !is_library_header(header)) {
    return {};
  }
  const auto size = static_cast<ElfW(Off)>(status.st_size);
  return has_all_segments(file.get(), size, header) ? "" : "file is cut short";
}

HeapText loader_message() noexcept {
  const char* message = ::dlerror();
  return duplicate(message == nullptr ? "unknown error" : message);
}

}  // namespace

Library::Library(const char* path) noexcept {
  if (const std::string_view danger = danger_in(path); !danger.empty()) {
    error_ = concatenate({path, ": ", danger});
    return;
  }
  handle_ = ::dlopen(path, RTLD_LAZY | RTLD_GLOBAL);
  if (handle_ == nullptr) error_ = loader_message();
}

void Library::unload() noexcept {
  if (handle_ != nullptr) ::dlclose(handle_);
  handle_ = nullptr;
}

void* Library::address(const char* name) noexcept {
  void* found = ::dlsym(handle_, name);
  if (found == nullptr) error_ = loader_message();
  return found;
}

}  // namespace sit
