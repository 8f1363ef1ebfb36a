// What the system tells of a file without opening it.
#pragma once

namespace sit {

// The mode bits of what the path names, links followed; 0, with the reason in errno, when it cannot
// be examined.
[[nodiscard]] unsigned file_mode(const char* path) noexcept;

[[nodiscard]] inline bool exists(const char* path) noexcept { return file_mode(path) != 0; }

// Whether such mode bits have that of a directory.
[[nodiscard]] bool is_directory(unsigned mode) noexcept;

}  // namespace sit
