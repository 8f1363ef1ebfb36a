// System information: which commands are tried, and how their sections are written.
#pragma once

namespace sit::usysinfo {

void write_all_sections() noexcept;

// A section from the first of a list's commands that succeeds, of which at most `limit` are tried.
void write_section(const char* title, const char** list, int limit) noexcept;

// A section from what the command prints.
void write_section(const char* title, const char* command) noexcept;

}  // namespace sit::usysinfo
