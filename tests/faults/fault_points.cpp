#include "faults/fault_points.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <pwd.h>
#include <sched.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstring>

// Where the C library keeps its own allocator: finding it by dlsym would allocate.
// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" void* __libc_malloc(size_t size);
extern "C" void* __libc_calloc(size_t count, size_t size);
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

namespace {

enum Group { kMalloc, kOpen, kWrite, kRead, kFork, kClose, kOpendir, kStat, kSignal, kNone };

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

// As a file server does that tells only at the end that it is full.
void lose_copy(int fd) {
  std::array<char, 64> link{};
  std::array<char, 512> path{};
  std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", fd);
  if (::readlink(link.data(), path.data(), path.size() - 1) < 0) return;
  if (std::strstr(path.data(), "/copies/") != nullptr) static_cast<void>(::ftruncate(fd, 0));
}

template <typename Function>
Function* real(Function* /*type*/, const char* name) {
  return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

// Reading and writing may be interrupted, too.
bool fails_to_go_on(Group group, int error) {
  const bool is_slow = group == kRead || group == kWrite;
  return fails(group, error) || (is_slow && fails(kSignal, EINTR));
}

}  // namespace

// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name,bugprone-macro-parentheses)
#define REAL(function) (*real(&::function, #function))
// A function of a group that returns `failed` when its turn has come, and else what the real one
// does.
#define FAILING(group, error, failed, type, function, parameters, arguments) \
  type function parameters {                                                 \
    return fails_to_go_on(group, error) ? failed : REAL(function) arguments; \
  }

extern "C" {

void* malloc(size_t size) { return fails(kMalloc, ENOMEM) ? nullptr : __libc_malloc(size); }
void* calloc(size_t count, size_t size) {
  return fails(kMalloc, ENOMEM) ? nullptr : __libc_calloc(count, size);
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

int open(const char* path, int flags, ...) {
  std::va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return fails(kOpen, EMFILE) ? -1 : REAL(open)(path, flags, mode);
}
FAILING(kOpen, EMFILE, nullptr, FILE*, fopen, (const char* path, const char* mode), (path, mode))
FAILING(kOpen, EMFILE, -1, int, mkostemp, (char* name, int flags), (name, flags))

size_t fwrite(const void* bytes, size_t size, size_t count, FILE* stream) {
  if (!fails(kWrite, ENOSPC)) return REAL(fwrite)(bytes, size, count, stream);
  constexpr int kErrorSeen = 0x20;
  stream->_flags |= kErrorSeen;
  return 0;
}
FAILING(kWrite, ENOSPC, -1, ssize_t, write, (int fd, const void* bytes, size_t count),
        (fd, bytes, count))
FAILING(kWrite, ENOSPC, -1, ssize_t, pwrite,
        (int fd, const void* bytes, size_t count, off_t offset), (fd, bytes, count, offset))
FAILING(kWrite, ENOSPC, -1, ssize_t, copy_file_range,
        (int from, off64_t* from_at, int to, off64_t* to_at, size_t count, unsigned flags),
        (from, from_at, to, to_at, count, flags))

FAILING(kRead, EIO, -1, ssize_t, read, (int fd, void* bytes, size_t count), (fd, bytes, count))
FAILING(kRead, EIO, -1, ssize_t, pread, (int fd, void* bytes, size_t count, off_t offset),
        (fd, bytes, count, offset))

FAILING(kFork, EAGAIN, -1, pid_t, fork, () noexcept, ())
FAILING(kFork, EAGAIN, -1, int, clone,
        (int (*run)(void*), void* stack, int flags, void* argument, ...) noexcept,
        (run, stack, flags, argument))
// An environment that cannot be listed leaves its section empty: no line tells why.
FAILING(kOpen, EMFILE, nullptr, FILE*, popen, (const char* command, const char* mode),
        (command, mode))

// What a failed close leaves is closed all the same, and a copy is then empty.
int close(int fd) {
  const bool is_refused = fails(kClose, EIO);
  if (is_refused) lose_copy(fd);
  const int result = REAL(close)(fd);
  if (is_refused) errno = EIO;
  return is_refused ? -1 : result;
}
int fclose(FILE* stream) {
  const int result = REAL(fclose)(stream);
  return fails(kClose, EIO) ? EOF : result;
}
int closedir(DIR* directory) {
  const int result = REAL(closedir)(directory);
  return fails(kClose, EIO) ? -1 : result;
}

FAILING(kOpendir, EMFILE, nullptr, DIR*, opendir, (const char* path), (path))
FAILING(kOpendir, EIO, nullptr, struct dirent*, readdir, (DIR * directory), (directory))

FAILING(kStat, EIO, -1, int, stat, (const char* path, struct stat* status) noexcept, (path, status))
FAILING(kStat, EIO, -1, int, lstat, (const char* path, struct stat* status) noexcept,
        (path, status))
FAILING(kSignal, EINTR, -1, int, ppoll,
        (struct pollfd * watched, nfds_t count, const struct timespec* left, const sigset_t* mask),
        (watched, count, left, mask))

FAILING(kStat, EIO, -1, int, fstat, (int fd, struct stat* status) noexcept, (fd, status))

}  // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name,bugprone-macro-parentheses)

namespace faults {

const std::vector<std::string>& groups() {
  static const std::vector<std::string> names{"malloc", "open",    "write", "read",  "fork",
                                              "close",  "opendir", "stat",  "signal"};
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
