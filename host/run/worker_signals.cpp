#include "run/worker_signals.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <string_view>

#include "run/product_library.h"
#include "support/mounts.h"

namespace host {
namespace {

constinit SignalReports reports;
constinit pid_t worker = 0;
constinit const char* volatile report_file = "";

// A line that is put together without allocating anything.
class Line {
 public:
  explicit Line(char kind) { add({&kind, 1}); }
  void add(std::string_view text) {
    for (const char c : text) {
      if (size_ < text_.size()) text_.at(size_++) = c;
    }
  }
  void add(long long number) {
    std::array<char, 24> digits{};
    const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    add(" ");
    add({digits.data(), static_cast<std::size_t>(end - digits.data())});
  }
  void send() {
    add("\n");
    static_cast<void>(!::write(reports.answers, text_.data(), size_));
  }

 private:
  std::array<char, 4200> text_{};
  std::size_t size_ = 0;
};

std::uint64_t size_of(int folder, const char* file) {
  struct stat status {};
  const bool is_there = ::fstatat(folder, file, &status, AT_SYMLINK_NOFOLLOW) == 0;
  return is_there ? static_cast<std::uint64_t>(status.st_size) : 0;
}

// What commands have printed and has not been copied into the report yet.
std::uint64_t bytes_to_copy() {
  alignas(dirent64) std::array<char, 2048> entries;
  std::uint64_t bytes = 0;
  ::lseek(reports.temporary, 0, SEEK_SET);
  for (;;) {
    const long got = ::syscall(SYS_getdents64, reports.temporary, entries.data(), entries.size());
    if (got <= 0) return bytes;
    for (long at = 0; at < got;) {
      const auto* entry = reinterpret_cast<const dirent64*>(entries.data() + at);
      if (entry->d_type != DT_DIR) bytes += size_of(reports.temporary, entry->d_name);
      at += entry->d_reclen;
    }
  }
}

// Not taken yet, an ended child still has a name.
void add_name(Line& line, pid_t pid) {
  std::array<char, 40> path{};
  std::string_view const proc = "/proc/";
  std::string_view const comm = "/comm";
  char* at = std::copy(proc.begin(), proc.end(), path.data());
  at = std::to_chars(at, path.data() + path.size() - comm.size() - 1, pid).ptr;
  std::copy(comm.begin(), comm.end(), at);
  const int file = ::open(path.data(), O_RDONLY | O_CLOEXEC);
  std::array<char, 32> name{};
  const ssize_t size = file < 0 ? 0 : ::read(file, name.data(), name.size());
  ::close(file);
  for (ssize_t i = 0; i < size; ++i) {
    const char c = name.at(static_cast<std::size_t>(i));
    if (c != '\n') line.add({&c, 1});
  }
}

void child_ended(int /*signal*/, siginfo_t* info, void* /*context*/) {
  const int kept = errno;
  Line line('c');
  line.add(info->si_pid);
  line.add(info->si_code);
  line.add(info->si_status);
  line.add(Room(reports.folder).is_short_for(bytes_to_copy()) ? 1 : 0);
  line.add(static_cast<long long>(size_of(reports.folder, report_file)));
  line.add(" ");
  add_name(line, info->si_pid);
  line.send();
  errno = kept;
}

std::uintptr_t instruction_of(const ucontext_t& context) {
#if defined(__x86_64__)
  return static_cast<std::uintptr_t>(context.uc_mcontext.gregs[REG_RIP]);
#elif defined(__aarch64__)
  return context.uc_mcontext.pc;
#else
  static_cast<void>(context);
  return 0;
#endif
}

void name_library(std::uintptr_t address) {
  static std::array<char, 4096> library;
  const int maps = ::open("/proc/self/maps", O_RDONLY | O_CLOEXEC);
  const std::size_t size = maps < 0 ? 0 : find_product_library(maps, address, library);
  Line line('x');
  line.add(" ");
  line.add({library.data(), size});
  line.send();
}

void crashed(int signal, siginfo_t* /*info*/, void* context) {
  if (::getpid() == worker) name_library(instruction_of(*static_cast<ucontext_t*>(context)));
  // What memory holds is nothing that a collection should bring home.
  const rlimit no_core{};
  ::setrlimit(RLIMIT_CORE, &no_core);
  ::raise(signal);  // which now has its usual effect
}

// Workers do not call exit(): a product has, in the worker or in a process made of it.
void ended_by_product() {
  if (::getpid() == worker) name_library(0);
}

void handle(int signal, void (*handler)(int, siginfo_t*, void*), int flags) {
  struct sigaction action {};
  action.sa_sigaction = handler;
  action.sa_flags = SA_SIGINFO | flags;
  ::sigaction(signal, &action, nullptr);
}

}  // namespace

void report_signals(const SignalReports& where) {
  reports = where;
  if (worker == 0) static_cast<void>(std::atexit(ended_by_product));
  worker = ::getpid();
  handle(SIGCHLD, child_ended, SA_RESTART | SA_NOCLDSTOP);
  // A stack that has run over leaves no room for a handler.
  static std::array<char, 65536> stack;
  const stack_t alternative{.ss_sp = stack.data(), .ss_flags = 0, .ss_size = stack.size()};
  ::sigaltstack(&alternative, nullptr);
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
    handle(signal, crashed, SA_ONSTACK | static_cast<int>(SA_RESETHAND) | SA_NODEFER);
  }
}

void set_current_report(const char* file) noexcept { report_file = file; }

}  // namespace host
