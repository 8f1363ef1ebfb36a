// Opening and reading files so that nothing odd under a path can hold up the host.
#pragma once

#include <cstddef>
#include <cstdio>

#include "handles.h"

namespace sit {

// Opens a file for reading. Never waits: a FIFO without a writer reads as empty. Refuses devices
// (EINVAL), which may never end.
[[nodiscard]] UniqueFd open_for_reading(const char* path) noexcept;

enum class Existing { kTruncate, kAppend };

// Opens or creates a file for writing. Never waits: a FIFO without a reader is refused (ENXIO).
[[nodiscard]] UniqueFile open_for_writing(const char* path, Existing existing) noexcept;

// Reads at most `count` bytes, resumed when a signal of the host's interrupts it. Returns the
// number read; 0 at the end of the file or when it cannot be read.
[[nodiscard]] std::size_t read_some(int fd, char* bytes, std::size_t count) noexcept;

// How much to read of a file that somebody may still be writing to: what it holds now. Without
// limit where the size says nothing, as for files under /proc.
[[nodiscard]] std::size_t size_to_read(int fd) noexcept;

// Reads like read_some, repeated until `count` bytes are in or nothing more comes.
[[nodiscard]] std::size_t read_up_to(int fd, char* bytes, std::size_t count) noexcept;

}  // namespace sit
