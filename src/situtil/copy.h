// Copying a file, or only the end of a large one.
#pragma once

#include "files.h"

namespace sit {

struct Copy {
  const char* source;
  const char* destination;
  bool trims = false;  // to the end of a large file
  Existing existing = Existing::kTruncate;
  bool tells = false;  // the report says when only the beginning of the source is copied
};

// As CopyEndOfFile.
[[nodiscard]] int copy_end_of_file(const Copy& copy) noexcept;

}  // namespace sit
