// How long something has lasted, whatever happens to the time of day.
#pragma once

#include <chrono>

namespace host {

using Clock = std::chrono::steady_clock;

[[nodiscard]] inline double seconds_since(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

}  // namespace host
