// Keeping the host's signals away from what would let them hurt it.
#pragma once

#include <csignal>

namespace sit {

// Blocks signals in this thread as long as it lives.
class BlockedSignals {
 public:
  explicit BlockedSignals(const sigset_t& signals) noexcept;
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;
  ~BlockedSignals();

 private:
  sigset_t before_;
};

// Whether writing to the file may raise a signal: a reader may leave, or a limit be met.
[[nodiscard]] bool may_raise_signals(int fd) noexcept;

// Lets writing fail with EPIPE and EFBIG alone: SIGPIPE and SIGXFSZ are blocked in this thread, and
// what became pending is gone at the end. Costs nothing where it is not `needed`.
class QuietWriting {
 public:
  explicit QuietWriting(bool needed) noexcept;
  QuietWriting(const QuietWriting&) = delete;
  QuietWriting& operator=(const QuietWriting&) = delete;
  ~QuietWriting();

 private:
  bool is_needed_;
  sigset_t before_;
  sigset_t pending_before_;
};

}  // namespace sit
