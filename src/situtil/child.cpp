#include "situtil/child.h"

#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "commfile.h"
#include "sit/codes.h"

namespace sit {
namespace {

constexpr int kFailStatus = 256;  // a normal exit with exit code 1
constexpr long kNanosecondsPerSecond = 1'000'000'000;

constinit unsigned loss_said_in = 0;  // the report that tells it

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
    : child_(child), pidfd_(static_cast<int>(::syscall(SYS_pidfd_open, child, 0))) {
  ::clock_gettime(CLOCK_MONOTONIC, &next_);
}

void ChildPauses::pause() noexcept {
  ++next_.tv_sec;
  if (time_until(next_).tv_sec < 0) {
    // The host itself was stopped for a while: the polls that are left keep their distance.
    ::clock_gettime(CLOCK_MONOTONIC, &next_);
    ++next_.tv_sec;
  }
  if (!has_ended_ && pidfd_.is_open()) {
    // One early end is enough: if waitpid still has nothing to say (a tracer may hold the child),
    // the polls that are left keep their distance.
    has_ended_ = ended_before_next();
  } else if (has_ended_ || !seen_to_end_before_next()) {
    sleep_until_next();
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

// Without a descriptor of the child, by looking often at first and then less so: a short command
// costs little more than it takes, a long one hardly any looks.
bool ChildPauses::seen_to_end_before_next() noexcept {
  constexpr long kLongestStep = 50'000'000;
  for (;;) {
    siginfo_t seen{};
    const int looked =
        ::waitid(P_PID, static_cast<id_t>(child_), &seen, WEXITED | WNOHANG | WNOWAIT);
    if ((looked == 0 && seen.si_pid == child_) || (looked != 0 && errno == ECHILD)) return true;
    const timespec left = time_until(next_);
    if (left.tv_sec < 0 || (left.tv_sec == 0 && left.tv_nsec < step_)) return false;
    const timespec step{0, step_};
    ::clock_nanosleep(CLOCK_MONOTONIC, 0, &step, nullptr);
    step_ = std::min(2 * step_, kLongestStep);
  }
}

int wait_for_child(pid_t child) noexcept {
  ChildPauses pauses{child};
  pid_t polled = 0;
  int status = 0;
  for (int poll = 0; poll < kPolls; ++poll) {
    polled = ::waitpid(child, &status, WNOHANG);
    log_verbose("pid %d, ret %d, status %d\n", child, polled, status);
    if (polled != 0) break;
    pauses.pause();
  }
  if (polled == 0) {
    log_verbose("execcmd: timeout of %d seconds exceeded, suspect process %d is hung\n", kPolls,
                child);
    return SIT_FAILED;
  }
  if (polled < 0) {
    log_once(loss_said_in,
             "WARNING: The host took the results of the commands (SIGCHLD), which therefore count "
             "as failed.\n");
    log_verbose("execcmd: waitpid returned -1, error\n");
    return SIT_FAILED;
  }
  log_verbose("execcmd: process completed, status is %d (FAIL_STATUS is %d\n", status, kFailStatus);
  return status == kFailStatus ? SIT_FAILED : status;
}

}  // namespace sit
