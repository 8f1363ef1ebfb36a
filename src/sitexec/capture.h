// Capture of any command or library entry point, with an index of what it left behind.
#pragma once

#include "commutils/heap_text.h"

namespace sit::sitexec {

struct Capture {
  const char* command;
  const char* entry;
  bool is_library;
  const char* base;
  const char* name;
  const char* output_file;
  const char* index;
};

// As RunCommand.
[[nodiscard]] int run_captured(const Capture& capture) noexcept;

// As ExecDLLFunction.
[[nodiscard]] bool call_entry_point(const char* path, const char* entry, HeapText& error) noexcept;

}  // namespace sit::sitexec
