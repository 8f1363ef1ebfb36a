#include "support/process.h"

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <filesystem>
#include <iterator>

namespace test {

int in_child(const std::function<int()>& work) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(work());
  int status = 0;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool handle(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  return ::sigaction(signal, &action, nullptr) == 0;
}

bool interrupt_every(suseconds_t microseconds) {
  const itimerval often{{0, microseconds}, {0, microseconds}};
  return handle(SIGALRM, [](int) {}) && ::setitimer(ITIMER_REAL, &often, nullptr) == 0;
}

FileSizeLimit::FileSizeLimit(rlim_t bytes) {
  const rlimit limit{bytes, RLIM_INFINITY};
  EXPECT_EQ(::prlimit(0, RLIMIT_FSIZE, &limit, &before_), 0);
}

void refuse(int call, int error, unsigned flags) {
  const unsigned short wanted = flags == 0 ? BPF_JGE : BPF_JSET;
  sock_filter instructions[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned>(call), 0, 3),
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args)),
      BPF_JUMP(BPF_JMP | wanted | BPF_K, flags, 0, 1),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(error)),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
  const sock_fprog program{std::size(instructions), instructions};
  ASSERT_EQ(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
  ASSERT_EQ(::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program), 0);
}

bool private_mounts(int further) {
  static const bool has_them =
      (::unshare(CLONE_NEWNS) == 0 || (further != 0 && ::unshare(CLONE_NEWNS | further) == 0)) &&
      ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
  return has_them;
}

bool mount_small(const std::string& where, const std::string& size) {
  std::filesystem::create_directories(where);
  return private_mounts() &&
         ::mount("none", where.c_str(), "tmpfs", 0, ("mode=777,size=" + size).c_str()) == 0;
}

}  // namespace test
