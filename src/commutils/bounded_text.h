// A text of fixed capacity. It takes a piece whole or not at all, so that no cut path is ever
// opened and no cut command ever run.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <string_view>

#include "commutils/views.h"

namespace sit {

// `Bytes` counts the terminator, as the capacities in the public headers do.
template <std::size_t Bytes>
class BoundedText {
 public:
  static constexpr std::size_t kBytes = Bytes;
  static constexpr std::size_t kMaxLength = Bytes - 1;

  constexpr BoundedText() noexcept { bytes_[0] = '\0'; }

  [[nodiscard]] bool append(std::string_view piece) noexcept {
    if (piece.size() > kMaxLength - length_) return false;
    put_text(bytes_.data() + length_, piece);
    length_ += piece.size();
    return true;
  }

  // Appends all pieces or, when they do not fit together, none.
  [[nodiscard]] bool append(std::initializer_list<std::string_view> pieces) noexcept {
    const std::size_t before = length_;
    const bool fits =
        std::ranges::all_of(pieces, [this](std::string_view piece) { return append(piece); });
    if (!fits) {
      length_ = before;
      bytes_[length_] = '\0';
    }
    return fits;
  }

  [[nodiscard]] const char* c_str() const noexcept { return bytes_.data(); }
  [[nodiscard]] std::string_view view() const noexcept { return {bytes_.data(), length_}; }
  [[nodiscard]] std::size_t size() const noexcept { return length_; }
  [[nodiscard]] bool empty() const noexcept { return length_ == 0; }

 private:
  std::array<char, Bytes> bytes_;
  std::size_t length_ = 0;
};

}  // namespace sit
