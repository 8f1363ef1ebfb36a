// Opening and reading files so that nothing odd under a path can hold up the host.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string_view>

#include "handles.h"

namespace sit {

// Opening waits for nobody, but as long as the kernel lets the holder of a lease on a file wait.

// Opens a file for reading. A FIFO without a writer reads as empty. Refuses devices (EINVAL), which
// may never end.
[[nodiscard]] UniqueFd open_for_reading(const char* path) noexcept;

enum class Existing { kTruncate, kAppend, kOverwrite };

// Opens or creates a file for writing. A FIFO without a reader is refused (ENXIO).
[[nodiscard]] UniqueFd open_for_writing(const char* path, Existing existing) noexcept;

// Writes all of it, resumed when a signal of the host's interrupts it. False when it cannot.
[[nodiscard]] bool write_all(int fd, std::string_view bytes) noexcept;

// Reads at most `count` bytes, resumed when a signal of the host's interrupts it. Returns the
// number read; 0 at the end of the file or when it cannot be read.
[[nodiscard]] std::size_t read_some(int fd, char* bytes, std::size_t count) noexcept;

// The same from `offset` on, wherever the descriptor stands.
[[nodiscard]] std::size_t read_some_at(int fd, char* bytes, std::size_t count,
                                       off_t offset) noexcept;

// Reads like read_some, repeated until `count` bytes are in or nothing more comes.
[[nodiscard]] std::size_t read_up_to(int fd, char* bytes, std::size_t count) noexcept;

}  // namespace sit
