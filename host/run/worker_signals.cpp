#include "run/worker_signals.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <ucontext.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "run/product_library.h"
#include "support/mounts.h"

namespace host {
namespace {

struct SignalReports {
  int answers = -1;
  int folder = -1;
  pid_t worker = 0;
  const char* volatile file = "";
  std::uint64_t room = 0;
};
SignalReports reports;

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

// Whether the output of the child that has just ended could not be written, or could not be copied
// once more: what went since the last one has ended is its output.
bool is_short_of_room() {
  const Room room(reports.folder);
  const std::uint64_t before = reports.room;
  reports.room = room.bytes;
  return room.is_short() || (room.bytes < before && room.bytes < before - room.bytes);
}

void child_ended(int /*signal*/, siginfo_t* info, void* /*context*/) {
  const int kept = errno;
  struct stat status {};
  const bool is_there = ::fstatat(reports.folder, reports.file, &status, AT_SYMLINK_NOFOLLOW) == 0;
  Line line('c');
  line.add(info->si_pid);
  line.add(info->si_code);
  line.add(info->si_status);
  line.add(is_short_of_room() ? 1 : 0);
  line.add(is_there ? status.st_size : 0);
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
  name_library(instruction_of(*static_cast<ucontext_t*>(context)));
  ::raise(signal);  // which now has its usual effect
}

// Workers do not call exit(): a product has, in the worker or in a process made of it.
void ended_by_product() {
  if (::getpid() == reports.worker) name_library(0);
}

void handle(int signal, void (*handler)(int, siginfo_t*, void*), int flags) {
  struct sigaction action {};
  action.sa_sigaction = handler;
  action.sa_flags = SA_SIGINFO | flags;
  ::sigaction(signal, &action, nullptr);
}

}  // namespace

void report_signals(int answers, int folder) {
  reports.answers = answers;
  reports.folder = folder;
  reports.worker = ::getpid();
  reports.room = Room(folder).bytes;
  handle(SIGCHLD, child_ended, SA_RESTART | SA_NOCLDSTOP);
  // A stack that has run over leaves no room for a handler.
  static std::array<char, 65536> stack;
  const stack_t alternative{.ss_sp = stack.data(), .ss_flags = 0, .ss_size = stack.size()};
  ::sigaltstack(&alternative, nullptr);
  for (const int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
    handle(signal, crashed, SA_ONSTACK | SA_RESETHAND | SA_NODEFER);
  }
  static_cast<void>(std::atexit(ended_by_product));
}

void set_current_report(const char* file) noexcept { reports.file = file; }

}  // namespace host
