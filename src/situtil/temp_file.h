// Temporary files that do not outlive their owner.
#pragma once

#include <sys/types.h>

#include <string_view>
#include <utility>

#include "commutils/heap_text.h"
#include "handles.h"

namespace sit {

// Made once, for its owner's eyes alone, and never opened again: whatever others put under its name
// is none of it. Stands where a few KB can really be written, in the temporary folder or else in
// that of the open report.
class TempFile {
 public:
  TempFile() noexcept;
  TempFile(const TempFile&) = delete;
  TempFile& operator=(const TempFile&) = delete;
  ~TempFile() { remove(); }

  [[nodiscard]] bool is_made() const noexcept { return name_ != nullptr; }
  [[nodiscard]] const char* name() const noexcept { return name_.get(); }
  [[nodiscard]] int fd() const noexcept { return file_.get(); }

  // Hands the open file over; what stands under its name is removed all the same.
  [[nodiscard]] UniqueFd release() noexcept { return std::move(file_); }
  // The file stays.
  void keep() noexcept { name_.reset(); }

  // What the file holds now is what will be read of it. Returns why it could not have held more: 0,
  // or the file system's error.
  [[nodiscard]] int seal() noexcept;
  [[nodiscard]] off_t size() const noexcept { return size_; }

 private:
  [[nodiscard]] bool make_in(std::string_view directory) noexcept;
  void remove() noexcept;

  HeapText name_;
  UniqueFd file_;
  off_t size_ = 0;
};

// As GetTempFile.
[[nodiscard]] HeapText temp_file_name() noexcept;

}  // namespace sit
