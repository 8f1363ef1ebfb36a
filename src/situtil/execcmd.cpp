// Running one command line in a child shell.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>

#include "commfile.h"
#include "sit/codes.h"
#include "sit/situtil.h"
#include "situtil/child.h"

namespace {

constexpr int kCannotStart = -1;  // 255 to whoever waits

// Closes every descriptor above standard error; on kernels without close_range, one by one.
void close_host_descriptors() noexcept {
  constexpr unsigned kFirst = STDERR_FILENO + 1;
  if (::syscall(SYS_close_range, kFirst, UINT_MAX, 0) == 0) return;
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  constexpr rlim_t kMost = 1 << 20;
  const int end = static_cast<int>(std::min(limit.rlim_cur, kMost));
  for (int fd = kFirst; fd < end; ++fd) ::close(fd);
}

void take_standard_input_from_nowhere() noexcept {
  const int nothing = ::open("/dev/null", O_RDONLY);
  if (nothing < 0) {
    ::close(STDIN_FILENO);
  } else if (nothing != STDIN_FILENO) {
    ::dup2(nothing, STDIN_FILENO);
  }
}

void restore_default_signals() noexcept {
  ::signal(SIGPIPE, SIG_DFL);
  sigset_t none;
  ::sigemptyset(&none);
  ::sigprocmask(SIG_SETMASK, &none, nullptr);
}

// The child's life between fork and exec: system calls only, but for the one message.
[[noreturn]] void become_command(const char* command, const char* output) noexcept {
  constexpr mode_t kReadableByAll = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
  const int out = ::open(output, O_WRONLY | O_CREAT, kReadableByAll);
  if (out < 0) {
    LogMsgV("execcmd: Cannot open output file %s for fork\n", output);
    ::_exit(kCannotStart);
  }
  ::dup2(out, STDERR_FILENO);
  ::dup2(out, STDOUT_FILENO);
  take_standard_input_from_nowhere();
  close_host_descriptors();
  restore_default_signals();
  ::execl("/bin/sh", "sh", "-c", command, nullptr);
  ::_exit(kCannotStart);
}

}  // namespace

extern "C" int execcmd(const char* command, const char* output) noexcept {
  if (command == nullptr || output == nullptr) return SIT_FAILED;
  const pid_t child = ::fork();
  if (child == 0) become_command(command, output);
  if (child < 0) {
    LogMsg("Error forking %s, returned %d\n", command, child);
    return SIT_FAILED;
  }
  return sit::wait_for_child(child);
}
