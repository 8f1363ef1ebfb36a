#include "situtil/start.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>

#include "commfile.h"
#include "files.h"
#include "signals.h"
#include "sit/codes.h"
#include "situtil/child.h"

// A child that works in the memory of its parent leaves no traces in it. The sanitizer would keep
// its marks for frames of which none ever returns.
#define SIT_IN_CHILD __attribute__((no_sanitize("address"), noinline))

namespace sit {
namespace {

constexpr int kCannotStart = -1;  // 255 to whoever waits

SIT_IN_CHILD void place(int fd, int standard) noexcept {
  if (fd != standard) {
    ::dup2(fd, standard);
  } else {
    ::fcntl(fd, F_SETFD, 0);
  }
}

SIT_IN_CHILD void take_standard_input_from_nowhere() noexcept {
  const int nothing = ::open("/dev/null", O_RDONLY);
  if (nothing < 0) {
    ::close(STDIN_FILENO);
  } else {
    place(nothing, STDIN_FILENO);
  }
}

// Lets the exec close every descriptor above standard error: what closing may have to wait for then
// no longer holds up the parent. On kernels without close_range they are marked one by one.
SIT_IN_CHILD void give_up_descriptors() noexcept {
  constexpr unsigned kFirst = STDERR_FILENO + 1;
  constexpr unsigned kOnExec = 1U << 2U;
  if (::syscall(SYS_close_range, kFirst, UINT_MAX, kOnExec) == 0) return;
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  constexpr rlim_t kMost = 1 << 20;
  const int end = static_cast<int>(std::min(limit.rlim_cur, kMost));
  for (int fd = kFirst; fd < end; ++fd) ::fcntl(fd, F_SETFD, FD_CLOEXEC);
}

// What the host catches, and what commands count on, gets its default action before any signal is
// let through: no handler of the host's runs in the child.
SIT_IN_CHILD void restore_default_signals() noexcept {
  struct sigaction standard {};
  standard.sa_handler = SIG_DFL;
  for (int signal = 1; signal < NSIG; ++signal) {
    struct sigaction action {};
    if (::sigaction(signal, nullptr, &action) != 0 || action.sa_handler == SIG_DFL) continue;
    if (action.sa_handler != SIG_IGN || signal == SIGPIPE || signal == SIGCHLD) {
      ::sigaction(signal, &standard, nullptr);
    }
  }
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

// The child's life before exec: system calls only, for the parent's memory may be its own. Opening
// the output waits for no reader, as the parent waits meanwhile.
SIT_IN_CHILD int become_command(void* argument) noexcept {
  const Order& order = *static_cast<const Order*>(argument);
  int output = order.output_fd;
  if (order.output != nullptr) {
    output = open_for_writing(order.output, Existing::kOverwrite).release();
  }
  if (output < 0) {
    log_verbose("execcmd: Cannot open output file %s for fork\n", order.output);
    ::_exit(kCannotStart);
  }
  place(output, STDERR_FILENO);
  place(output, STDOUT_FILENO);
  take_standard_input_from_nowhere();
  give_up_descriptors();
  restore_default_signals();
  // Without the "--" the shell would take such a command for its own options.
  const bool is_like_option = *order.command == '-' || *order.command == '+';
  const char* const words[] = {"sh", "-c", is_like_option ? "--" : order.command,
                               is_like_option ? order.command : nullptr, nullptr};
  ::execv("/bin/sh", const_cast<char* const*>(words));
  ::_exit(kCannotStart);
}

// A stack with a page in front of it that nobody may touch.
class ChildStack {
 public:
  ChildStack() noexcept
      : bytes_(::mmap(nullptr, kBytes, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK, -1, 0)) {
    if (is_there()) ::mprotect(bytes_, static_cast<std::size_t>(::getpagesize()), PROT_NONE);
  }
  ChildStack(const ChildStack&) = delete;
  ChildStack& operator=(const ChildStack&) = delete;
  ~ChildStack() {
    if (is_there()) ::munmap(bytes_, kBytes);
  }

  [[nodiscard]] bool is_there() const noexcept { return bytes_ != MAP_FAILED; }
  [[nodiscard]] void* end() const noexcept { return static_cast<char*>(bytes_) + kBytes; }

 private:
  static constexpr std::size_t kBytes = std::size_t{192} << 10U;
  void* bytes_;
};

}  // namespace

// fork copies the page tables of the host; this child borrows them until it is another program.
pid_t start(const Order& order) noexcept {
  sigset_t all;
  ::sigfillset(&all);
  const BlockedSignals blocked{all};
  const int error = errno;
  const ChildStack stack;
  pid_t child = -1;
  if (stack.is_there()) {
    child = ::clone(become_command, stack.end(), CLONE_VM | CLONE_VFORK | SIGCHLD,
                    const_cast<Order*>(&order));
  }
  if (child < 0) child = ::fork();
  if (child == 0) become_command(const_cast<Order*>(&order));
  errno = error;
  return child;
}

Outcome run(const Order& order) noexcept {
  const pid_t child = start(order);
  if (child >= 0) return {wait_for_child(child), true};
  log("Error forking %s, returned %d\n", order.command, child);
  return {SIT_FAILED, false};
}

}  // namespace sit
