// Copying what a command printed into the open report.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sit {

// Copies at most about `most` bytes. A copy need not look at lines: it goes by whole blocks, each
// flushed.
void copy_into_report(int fd, std::size_t most = SIZE_MAX) noexcept;

}  // namespace sit
