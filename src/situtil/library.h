// Shared libraries of the installed products and of the host's choice, loaded for a short time.
#pragma once

#include <bit>
#include <string_view>
#include <utility>

#include "commutils/heap_text.h"

namespace sit {

class Library {
 public:
  // Loads lazily, with global symbols. Never hands the loader a file whose loading would hang or
  // kill the process: one that is cut short, a FIFO or a device.
  explicit Library(const char* path) noexcept;
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  ~Library() { unload(); }

  [[nodiscard]] bool is_loaded() const noexcept { return handle_ != nullptr; }
  void unload() noexcept;

  // Null when the library has no such entry point.
  template <typename Function>
  [[nodiscard]] Function entry_point(const char* name) noexcept {
    return std::bit_cast<Function>(address(name));
  }

  // Why loading or the last look-up failed.
  [[nodiscard]] HeapText take_error() noexcept { return std::move(error_); }

 private:
  void* address(const char* name) noexcept;

  void* handle_ = nullptr;
  HeapText error_;
};

}  // namespace sit
