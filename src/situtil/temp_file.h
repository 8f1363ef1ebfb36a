// Temporary files that do not outlive their owner.
#pragma once

#include <unistd.h>

#include "commutils/heap_text.h"
#include "sit/situtil.h"

namespace sit {

// A name from GetTempFile; whatever stands under it at the end is removed.
class TempFile {
 public:
  TempFile() noexcept : name_(GetTempFile()) {}
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;
  ~TempFile() { remove(); }

  [[nodiscard]] bool has_name() const noexcept { return name_ != nullptr; }
  [[nodiscard]] const char* name() const noexcept { return name_.get(); }
  void remove() const noexcept {
    if (name_ != nullptr) ::unlink(name_.get());
  }

 private:
  HeapText name_;
};

}  // namespace sit
