// Listings and copies through the shell's own tools.
#pragma once

#include <cstddef>
#include <string_view>

namespace sit {

// Writes what "ls" with the options prints about the directory into the open report; says so when
// that makes a command of more than `max_length` characters.
void list_directory(std::string_view options, std::string_view directory,
                    std::size_t max_length) noexcept;

enum class Depth { kOne, kAll };

// As ListFiles.
void list_files(const char* directory, Depth depth) noexcept;

// As MyCopy.
void copy_by_command(const char* source, const char* destination) noexcept;

}  // namespace sit
