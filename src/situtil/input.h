// How much is read of a file that others may write to, or that has no end.
#pragma once

#include <sys/types.h>

#include <cstddef>

#include "situtil/temp_file.h"

namespace sit {

// The bytes of a file from where it stands: what it held at the making, whoever goes on writing to
// it. Of a file whose size says nothing, as under /proc, the first 16 MB.
class Input {
 public:
  // Does not own the descriptor. When the file goes on behind the 16 MB the report says so; without
  // a name it does not.
  explicit Input(int fd, const char* name = nullptr) noexcept;
  // At most `most` bytes.
  Input(int fd, std::size_t most) noexcept : fd_(fd), left_(most) {}
  // All that a temporary file held when it was sealed, wherever the command that writes to it is.
  explicit Input(const TempFile& file) noexcept;

  // Reads at most `count` bytes. Returns the number read; 0 at the end, or when the file cannot be
  // read.
  [[nodiscard]] std::size_t read(char* bytes, std::size_t count) noexcept;

  // 0, or why reading came to no end.
  [[nodiscard]] int error() const noexcept { return error_; }

  // Whether the file tells its size; an empty one does.
  [[nodiscard]] bool tells_size() noexcept;

  // Lets the kernel copy what it can without the bytes coming by here. The rest is left to read.
  void send_to(int destination) noexcept;

 private:
  [[nodiscard]] std::size_t fetch(char* bytes, std::size_t count) noexcept;
  void look_for_more() noexcept;

  int fd_;
  std::size_t left_;
  off_t offset_ = -1;  // of the next byte; -1: where the descriptor stands
  bool is_sizeless_ = false;
  int error_ = 0;
  const char* name_ = nullptr;
};

// Says so in the report when reading the file came to no end.
void log_if_cut_off(const Input& input, const char* name) noexcept;

}  // namespace sit
