// Reading a text in pieces of limited length: the one loop behind every parser and copy.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "commutils/bounded_text.h"

namespace sit {

// Characters of a piece read from a file, its newline included.
inline constexpr std::size_t kPieceLength = 254;

struct Piece {
  std::string_view text;  // its newline included; valid until the next piece is read
  bool starts_line = true;
  bool goes_on = false;  // more of the line's own text follows: a value at the end may be cut
};

// A line, or a part of one, as a C text: there is always room for it.
using LineText = BoundedText<kPieceLength + 1>;
[[nodiscard]] inline LineText line_text(std::string_view part) noexcept {
  LineText text;
  static_cast<void>(text.append(part));
  return text;
}

// Says that a value is not used because its line goes on behind the piece that was read of it.
void log_cut_value(const char* where) noexcept;

class PieceReader {
 public:
  // Reads `most` bytes at most. Does not own the descriptor.
  explicit PieceReader(int fd, std::size_t most = SIZE_MAX) noexcept : fd_(fd), left_(most) {}

  // False at the end of the text, or when it cannot be read any further.
  [[nodiscard]] bool next(Piece& piece) noexcept;

 private:
  void fill() noexcept;

  int fd_;
  std::size_t left_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  bool at_end_ = false;
  bool starts_line_ = true;
  std::array<char, 4096> bytes_;
};

}  // namespace sit
