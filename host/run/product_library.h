// Which library of a product a process is in: what it has mapped beyond what is ours.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <span>
#include <string>

namespace host {

// Whatever this process has mapped now is not a product's, nor is the plug-in at this path, nor
// what lies beside the C library.
void note_own_libraries(const std::string& plugin);

// Copies into `name`, with its end, the path of the product's library that holds the address, or
// else of the one loaded last. `maps` is an open /proc/PID/maps. Returns the length of the path, 0
// when there is none. Makes system calls only, so that a signal handler may ask.
std::size_t find_product_library(int maps, std::uintptr_t address, std::span<char> name) noexcept;

// The one that this other process has loaded last; empty when it has none.
[[nodiscard]] std::string product_library_of(pid_t pid);

}  // namespace host
