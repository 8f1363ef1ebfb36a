// Copies of files for the library's own use.
#pragma once

#include "files.h"

namespace sit {

// As CopyEndOfFile; the report calls the source `name` when only its beginning is copied, and says
// nothing without one.
[[nodiscard]] int copy_end_of_file(const char* source, const char* destination, bool trim,
                                   Existing existing, const char* name) noexcept;

}  // namespace sit
