#include "situtil/piece_reader.h"

#include <algorithm>
#include <cstring>

#include "commfile.h"
#include "commutils/views.h"
#include "files.h"

namespace sit {

void log_cut_value(const char* where) noexcept {
  LogMsg("ERROR: A value in %s goes beyond the first %d characters of its line and is not used.\n",
         where, static_cast<int>(kPieceLength));
}

// Reads until a whole piece is there. One character more than a piece tells whether the text goes
// on after it.
void PieceReader::fill() noexcept {
  const std::size_t held = end_ - begin_;
  std::memmove(bytes_.data(), bytes_.data() + begin_, held);
  begin_ = 0;
  end_ = held;
  while (!at_end_ && end_ <= kPieceLength) {
    const std::size_t got =
        read_some(fd_, bytes_.data() + end_, std::min(bytes_.size() - end_, left_));
    at_end_ = got == 0;
    left_ -= got;
    end_ += got;
  }
}

bool PieceReader::next(Piece& piece) noexcept {
  const auto newline_ahead = [this]() -> const void* {
    return std::memchr(bytes_.data() + begin_, '\n', end_ - begin_);
  };
  if (end_ - begin_ <= kPieceLength && newline_ahead() == nullptr) fill();
  if (begin_ == end_) return false;

  const std::string_view ahead{bytes_.data() + begin_, end_ - begin_};
  const std::string_view longest = head(ahead, kPieceLength);
  const std::size_t newline = longest.find('\n');
  piece.text = newline == std::string_view::npos ? longest : head(longest, newline + 1);
  piece.starts_line = starts_line_;
  starts_line_ = newline != std::string_view::npos;
  const std::string_view behind = tail(ahead, piece.text.size());
  piece.goes_on =
      !starts_line_ && !behind.empty() && behind.front() != '\n' && behind.front() != '\r';
  begin_ += piece.text.size();
  return true;
}

}  // namespace sit
