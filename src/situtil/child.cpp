#include "situtil/child.h"

#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "commfile.h"
#include "sit/codes.h"

namespace sit {
namespace {

constexpr int kFailStatus = 256;  // a normal exit with exit code 1
constexpr long kNanosecondsPerSecond = 1'000'000'000;

// Time left until `instant`; negative seconds when it has passed.
timespec time_until(const timespec& instant) noexcept {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  timespec left{instant.tv_sec - now.tv_sec, instant.tv_nsec - now.tv_nsec};
  if (left.tv_nsec < 0) {
    --left.tv_sec;
    left.tv_nsec += kNanosecondsPerSecond;
  }
  return left;
}

}  // namespace

ChildPauses::ChildPauses(pid_t child) noexcept
    : pidfd_(static_cast<int>(::syscall(SYS_pidfd_open, child, 0))) {
  ::clock_gettime(CLOCK_MONOTONIC, &next_);
}

void ChildPauses::pause() noexcept {
  ++next_.tv_sec;
  if (time_until(next_).tv_sec < 0) {
    // The host itself was stopped for a while: the polls that are left keep their distance.
    ::clock_gettime(CLOCK_MONOTONIC, &next_);
    ++next_.tv_sec;
  }
  if (!pidfd_.is_open()) {
    sleep_until_next();
  } else if (ended_before_next()) {
    // One early end is enough: if waitpid still has nothing to say (a tracer may hold the child),
    // the polls that are left keep their distance.
    pidfd_.reset();
  }
}

void ChildPauses::sleep_until_next() const noexcept {
  while (::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &next_, nullptr) == EINTR) {
  }
}

bool ChildPauses::ended_before_next() const noexcept {
  pollfd watched{pidfd_.get(), POLLIN, 0};
  for (;;) {
    timespec left = time_until(next_);
    if (left.tv_sec < 0) return false;
    const int ready = ::ppoll(&watched, 1, &left, nullptr);
    if (ready > 0) return true;
    if (ready < 0 && errno != EINTR) {
      sleep_until_next();
      return false;
    }
  }
}

int wait_for_child(pid_t child) noexcept {
  ChildPauses pauses{child};
  pid_t polled = 0;
  int status = 0;
  for (int poll = 0; poll < kPolls; ++poll) {
    polled = ::waitpid(child, &status, WNOHANG);
    LogMsgV("pid %d, ret %d, status %d\n", child, polled, status);
    if (polled != 0) break;
    pauses.pause();
  }
  if (polled == 0) {
    LogMsgV("execcmd: timeout of %d seconds exceeded, suspect process %d is hung\n", kPolls, child);
    return SIT_FAILED;
  }
  if (polled < 0) {
    LogMsgV("execcmd: waitpid returned -1, error\n");
    return SIT_FAILED;
  }
  LogMsgV("execcmd: process completed, status is %d (FAIL_STATUS is %d\n", status, kFailStatus);
  return status == kFailStatus ? SIT_FAILED : status;
}

}  // namespace sit
