// Reading a text in pieces of limited length: the one loop behind every parser and copy.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace sit {

// Characters of a piece read from a file, its newline included.
inline constexpr std::size_t kPieceLength = 254;

struct Piece {
  std::string_view text;  // its newline included; valid until the next piece is read
  bool starts_line = true;
  bool goes_on = false;  // more of the line's own text follows: a value at the end may be cut
};

class PieceReader {
 public:
  // Does not own the descriptor.
  explicit PieceReader(int fd) noexcept : fd_(fd) {}

  // False at the end of the text, or when it cannot be read any further.
  [[nodiscard]] bool next(Piece& piece) noexcept;

 private:
  void fill() noexcept;

  int fd_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  bool at_end_ = false;
  bool starts_line_ = true;
  std::array<char, 4096> bytes_;
};

}  // namespace sit
