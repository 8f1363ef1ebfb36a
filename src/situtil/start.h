// Starting a child, at the same cost in a host of any size.
#pragma once

#include <sys/types.h>

namespace sit {

// A command line for the shell, and where its output goes: to the file at a path, which the child
// opens or makes, or without one to a descriptor.
struct Order {
  const char* command;
  const char* output;
  int output_fd = -1;
};

// Returns the child, or -1 when none could be made.
[[nodiscard]] pid_t start(const Order& order) noexcept;

struct Outcome {
  int result;  // what execcmd returns
  bool has_started;
};

// Starts a child and waits for it.
Outcome run(const Order& order) noexcept;

}  // namespace sit
