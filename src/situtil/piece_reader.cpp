#include "situtil/piece_reader.h"

#include <cstring>

#include "commutils/views.h"

namespace sit {

// Reads until a whole piece is there, or nothing more comes.
void PieceReader::fill() noexcept {
  const std::size_t held = end_ - begin_;
  std::memmove(bytes_.data(), bytes_.data() + begin_, held);
  begin_ = 0;
  end_ = held;
  while (!at_end_ && end_ < kPieceLength) {
    const std::size_t got = input_.read(bytes_.data() + end_, bytes_.size() - end_);
    at_end_ = got == 0;
    end_ += got;
  }
}

bool PieceReader::next(std::string_view& piece) noexcept {
  const auto held_piece = [this] {
    const std::string_view longest = head({bytes_.data() + begin_, end_ - begin_}, kPieceLength);
    const std::size_t newline = longest.find('\n');
    return newline == std::string_view::npos ? longest : head(longest, newline + 1);
  };
  piece = held_piece();
  if (piece.size() < kPieceLength && !piece.ends_with('\n')) {
    fill();
    piece = held_piece();
  }
  begin_ += piece.size();
  return !piece.empty();
}

}  // namespace sit
