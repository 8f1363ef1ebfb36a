#include "support/lines.h"

#include <unistd.h>

#include <algorithm>
#include <array>

namespace host {

bool Lines::hand_out(std::string_view line) {
  is_wanted_ = is_wanted_ && take_(line.substr(0, kLongest), ++number_);
  return is_wanted_;
}

bool Lines::feed(std::string_view bytes) {
  while (!bytes.empty() && is_wanted_) {
    const std::size_t newline = bytes.find('\n');
    const std::string_view piece = bytes.substr(0, newline);
    if (newline == std::string_view::npos || is_held_) {
      held_ += piece.substr(0, std::min(piece.size(), kLongest - held_.size()));
      is_held_ = true;
    }
    if (newline == std::string_view::npos) break;
    hand_out(is_held_ ? held_ : piece);
    held_.clear();
    is_held_ = false;
    bytes.remove_prefix(newline + 1);
  }
  return is_wanted_;
}

void Lines::finish() {
  if (is_held_) hand_out(held_);
  is_held_ = false;
}

bool Lines::read(int fd, std::uint64_t most) {
  std::array<char, 65536> block;
  while (is_wanted_) {
    const auto got = ::read(fd, block.data(), std::min<std::uint64_t>(block.size(), most));
    if (got <= 0) break;
    feed({block.data(), static_cast<std::size_t>(got)});
    most -= static_cast<std::uint64_t>(got);
  }
  finish();
  return is_wanted_;
}

}  // namespace host
