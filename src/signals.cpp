#include "signals.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <ctime>

namespace sit {
namespace {

constexpr int kOfWriting[] = {SIGPIPE, SIGXFSZ};

sigset_t set_of_one(int signal) noexcept {
  sigset_t set;
  ::sigemptyset(&set);
  ::sigaddset(&set, signal);
  return set;
}

void consume(int signal) noexcept {
  const sigset_t set = set_of_one(signal);
  constexpr timespec kNoWait{};
  while (::sigtimedwait(&set, nullptr, &kNoWait) < 0 && errno == EINTR) {
  }
}

}  // namespace

BlockedSignals::BlockedSignals(const sigset_t& signals) noexcept {
  ::sigprocmask(SIG_BLOCK, &signals, &before_);
}

BlockedSignals::~BlockedSignals() { ::sigprocmask(SIG_SETMASK, &before_, nullptr); }

bool may_raise_signals(int fd) noexcept {
  struct stat status {};
  rlimit limit{};
  return ::fstat(fd, &status) != 0 || !S_ISREG(status.st_mode) ||
         ::getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur != RLIM_INFINITY;
}

QuietWriting::QuietWriting(bool needed) noexcept : is_needed_(needed) {
  if (!needed) return;
  ::sigpending(&pending_before_);
  sigset_t of_writing;
  ::sigemptyset(&of_writing);
  for (const int signal : kOfWriting) ::sigaddset(&of_writing, signal);
  ::sigprocmask(SIG_BLOCK, &of_writing, &before_);
}

QuietWriting::~QuietWriting() {
  if (!is_needed_) return;
  const int error = errno;
  for (const int signal : kOfWriting) {
    if (::sigismember(&pending_before_, signal) == 0) consume(signal);
  }
  ::sigprocmask(SIG_SETMASK, &before_, nullptr);
  errno = error;
}

}  // namespace sit
