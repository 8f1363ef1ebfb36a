// Waiting for a child without signals: the host keeps SIGCHLD for itself.
#pragma once

#include <sys/types.h>

#include <ctime>

#include "handles.h"

namespace sit {

inline constexpr int kPolls = 60;

// Instants one second apart, counted from its making; a pause ends at the next of them or as soon
// as the child has ended.
class ChildPauses {
 public:
  explicit ChildPauses(pid_t child) noexcept;
  void pause() noexcept;

 private:
  void sleep_until_next() const noexcept;
  [[nodiscard]] bool ended_before_next() const noexcept;
  [[nodiscard]] bool seen_to_end_before_next() noexcept;

  pid_t child_;
  UniqueFd pidfd_;
  bool has_ended_ = false;
  long step_ = 250'000;  // nanoseconds
  timespec next_{};
};

// Waits for the child: at most 60 polls. Returns what execcmd returns.
[[nodiscard]] int wait_for_child(pid_t child) noexcept;

}  // namespace sit
