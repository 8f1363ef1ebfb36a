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
  bool ends_line = false;  // with a newline, or because the text ends here
};

class PieceReader {
 public:
  static constexpr std::size_t kMaxPieceLength = 8191;

  // Does not own the descriptor. `piece_length` is at most kMaxPieceLength.
  PieceReader(int fd, std::size_t piece_length) noexcept : fd_(fd), piece_length_(piece_length) {}

  // False at the end of the text, or when it cannot be read any further.
  [[nodiscard]] bool next(Piece& piece) noexcept;

 private:
  void fill() noexcept;

  int fd_;
  std::size_t piece_length_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  bool at_end_ = false;
  bool starts_line_ = true;
  std::array<char, kMaxPieceLength + 1> bytes_;
};

}  // namespace sit
