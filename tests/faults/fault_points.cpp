#include "faults/fault_points.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pwd.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>

// Where the C library keeps its own allocator: finding it by dlsym would allocate.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" void* __libc_malloc(size_t size);
extern "C" void* __libc_calloc(size_t count, size_t size);
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

namespace {

enum Group { kMalloc, kOpen, kWrite, kRead, kFork, kClose, kOpendir, kStat, kNone };

struct Plan {
  Group group = kNone;
  int calls_until_fault = 0;
  faults::Span span = faults::Span::kOnce;
  void (*at_first)() = nullptr;
  pid_t process = 0;
  int refused = 0;
};
constinit Plan plan;

// Whether this call is to fail, with `error`.
bool fails(Group group, int error) {
  if (plan.group != group || ::getpid() != plan.process) return false;
  const bool is_over = plan.span == faults::Span::kOnce && plan.refused > 0;
  if (is_over || --plan.calls_until_fault > 0) return false;
  if (plan.refused++ == 0) {
    const Plan current = plan;
    plan.group = kNone;
    current.at_first();
    plan = current;
  }
  errno = error;
  return true;
}

template <typename Function>
Function* real(Function* /*type*/, const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

#define REAL(function) (*real(&::function, #function))

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" {

void* malloc(size_t size) { return fails(kMalloc, ENOMEM) ? nullptr : __libc_malloc(size); }
void* calloc(size_t count, size_t size) {
  return fails(kMalloc, ENOMEM) ? nullptr : __libc_calloc(count, size);
}

int open(const char* path, int flags, ...) {
  std::va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return fails(kOpen, EMFILE) ? -1 : REAL(open)(path, flags, mode);
}
FILE* fopen(const char* path, const char* mode) {
  return fails(kOpen, EMFILE) ? nullptr : REAL(fopen)(path, mode);
}
int mkostemp(char* name, int flags) {
  return fails(kOpen, EMFILE) ? -1 : REAL(mkostemp)(name, flags);
}

size_t fwrite(const void* bytes, size_t size, size_t count, FILE* stream) {
  if (!fails(kWrite, ENOSPC)) return REAL(fwrite)(bytes, size, count, stream);
  constexpr int kErrorSeen = 0x20;
  stream->_flags |= kErrorSeen;
  return 0;
}
ssize_t write(int fd, const void* bytes, size_t count) {
  return fails(kWrite, ENOSPC) ? -1 : REAL(write)(fd, bytes, count);
}
ssize_t copy_file_range(int from, off64_t* from_offset, int to, off64_t* to_offset, size_t count,
                        unsigned flags) {
  if (fails(kWrite, ENOSPC)) return -1;
  return REAL(copy_file_range)(from, from_offset, to, to_offset, count, flags);
}
ssize_t pwrite(int fd, const void* bytes, size_t count, off_t offset) {
  return fails(kWrite, ENOSPC) ? -1 : REAL(pwrite)(fd, bytes, count, offset);
}

// The name service of glibc brings the process down when it runs out of memory. That is not the
// plug-in's to mend.
struct passwd* getpwuid(uid_t user) {
  const Plan current = plan;
  plan.group = kNone;
  struct passwd* entry = REAL(getpwuid)(user);
  plan = current;
  return entry;
}

ssize_t read(int fd, void* bytes, size_t count) {
  return fails(kRead, EIO) ? -1 : REAL(read)(fd, bytes, count);
}
ssize_t pread(int fd, void* bytes, size_t count, off_t offset) {
  return fails(kRead, EIO) ? -1 : REAL(pread)(fd, bytes, count, offset);
}

pid_t fork() noexcept { return fails(kFork, EAGAIN) ? -1 : REAL(fork)(); }
int clone(int (*run)(void*), void* stack, int flags, void* argument, ...) noexcept {
  return fails(kFork, EAGAIN) ? -1 : REAL(clone)(run, stack, flags, argument);
}
FILE* popen(const char* command, const char* mode) {
  return fails(kFork, EAGAIN) ? nullptr : REAL(popen)(command, mode);
}

// What a failed close leaves is closed all the same.
int close(int fd) {
  const int result = REAL(close)(fd);
  return fails(kClose, EIO) ? -1 : result;
}
int fclose(FILE* stream) {
  const int result = REAL(fclose)(stream);
  return fails(kClose, EIO) ? EOF : result;
}
int closedir(DIR* directory) {
  const int result = REAL(closedir)(directory);
  return fails(kClose, EIO) ? -1 : result;
}

DIR* opendir(const char* path) { return fails(kOpendir, EMFILE) ? nullptr : REAL(opendir)(path); }
struct dirent* readdir(DIR* directory) {
  return fails(kOpendir, EIO) ? nullptr : REAL(readdir)(directory);
}

int stat(const char* path, struct stat* status) noexcept {
  return fails(kStat, EIO) ? -1 : REAL(stat)(path, status);
}
int lstat(const char* path, struct stat* status) noexcept {
  return fails(kStat, EIO) ? -1 : REAL(lstat)(path, status);
}
int fstat(int fd, struct stat* status) noexcept {
  return fails(kStat, EIO) ? -1 : REAL(fstat)(fd, status);
}

}  // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

namespace faults {

const std::vector<std::string>& groups() {
  static const std::vector<std::string> names{"malloc", "open",  "write",   "read",
                                              "fork",   "close", "opendir", "stat"};
  return names;
}

void arm(const std::string& group, int n, Span span, void (*at_first)()) {
  int index = 0;
  while (groups()[static_cast<std::size_t>(index)] != group) ++index;
  plan = {static_cast<Group>(index), n, span, at_first, ::getpid(), 0};
}

int disarm() {
  const int refused = plan.refused;
  plan = {};
  return refused;
}

}  // namespace faults
