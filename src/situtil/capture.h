// Copying what a command printed into the open report.
#pragma once

#include <cstddef>

namespace sit {

// Copies at most `count` bytes, or all there are when `count` is 0. A copy need not look at lines:
// it goes by whole blocks, each flushed.
void copy_into_report(int fd, std::size_t count) noexcept;

}  // namespace sit
