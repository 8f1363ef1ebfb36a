// What a message shows of a text of any length.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <initializer_list>
#include <string_view>

#include "commutils/views.h"

namespace sit {

// The beginning and the end of a text: a path is known by where it starts and by its file's name.
class Excerpt {
 public:
  static constexpr std::size_t kShown = 100;  // at either end
  static constexpr std::size_t kMostWritten = 2 * kShown + 3;

  Excerpt() noexcept = default;
  Excerpt(std::initializer_list<std::string_view> pieces) noexcept {
    for (const std::string_view piece : pieces) append(piece);
  }

  void append(std::string_view piece) noexcept {
    length_ += piece.size();
    const std::string_view first = head(piece, beginning_.size() - held_);
    put(beginning_.data() + held_, first);
    held_ += first.size();
    const std::string_view rest = tail(piece, first.size());
    const std::string_view last = tail(rest, rest.size() - std::min(rest.size(), end_.size()));
    std::memmove(end_.data(), end_.data() + last.size(), end_.size() - last.size());
    put(end_.data() + end_.size() - last.size(), last);
  }

  // Of the whole text.
  [[nodiscard]] std::size_t length() const noexcept { return length_; }

  // At most kMostWritten characters. Returns where they end.
  char* write(char* to) const noexcept {
    to = put(to, {beginning_.data(), held_});
    if (length_ > beginning_.size() + end_.size()) to = put(to, "...");
    const std::size_t behind = std::min(length_ - held_, end_.size());
    return put(to, {end_.data() + end_.size() - behind, behind});
  }

 private:
  std::array<char, kShown> beginning_;
  std::array<char, kShown> end_;
  std::size_t held_ = 0;  // of the beginning
  std::size_t length_ = 0;
};

}  // namespace sit
