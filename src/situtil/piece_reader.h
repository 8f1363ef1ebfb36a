// Reading a text in pieces of limited length: the one loop behind every parser.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "commutils/bounded_text.h"
#include "situtil/input.h"

namespace sit {

// Characters of a piece read from a file, its newline included. A longer line arrives in several,
// and each of them is a line like any other.
inline constexpr std::size_t kPieceLength = 254;

// A piece, or a part of one, as a C text: there is always room for it.
using LineText = BoundedText<kPieceLength + 1>;
[[nodiscard]] inline LineText line_text(std::string_view part) noexcept {
  LineText text;
  static_cast<void>(text.append(part));
  return text;
}

class PieceReader {
 public:
  explicit PieceReader(const Input& input) noexcept : input_(input) {}

  // Gives the next piece, its newline included, valid until the one after it is read. False at the
  // end of the text, or when it cannot be read any further.
  [[nodiscard]] bool next(std::string_view& piece) noexcept;

 private:
  void fill() noexcept;

  Input input_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  bool at_end_ = false;
  std::array<char, 4096> bytes_;
};

}  // namespace sit
