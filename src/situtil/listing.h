// Directory listings for the library's own use.
#pragma once

#include <cstddef>
#include <string_view>

namespace sit {

// Writes what "ls" with the options prints about the directory into the open report; says so when
// that makes a command of more than `max_length` characters.
void list_directory(std::string_view options, std::string_view directory,
                    std::size_t max_length) noexcept;

}  // namespace sit
