// Texts from malloc: the record fields, and whatever crosses the boundary, where the caller frees
// with free().
#pragma once

#include <cstdlib>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string_view>

#include "commutils/views.h"

namespace sit {

struct FreeText {
  void operator()(void* memory) const noexcept { std::free(memory); }
};
using HeapText = std::unique_ptr<char, FreeText>;

// A new text of all pieces in a row; null when memory runs out.
[[nodiscard]] inline HeapText concatenate(std::initializer_list<std::string_view> pieces) noexcept {
  std::size_t length = 0;
  for (const std::string_view piece : pieces) length += piece.size();
  HeapText text{static_cast<char*>(std::malloc(length + 1))};
  if (text == nullptr) return text;
  char* end = text.get();
  for (const std::string_view piece : pieces) end = put(end, piece);
  *end = '\0';
  return text;
}

[[nodiscard]] inline HeapText duplicate(std::string_view text) noexcept {
  return concatenate({text});
}

// Makes a record's field a copy of `text`; the field is null when memory runs out.
inline void replace_field(char*& field, std::string_view text) noexcept {
  HeapText copy = duplicate(text);
  std::free(field);
  field = copy.release();
}

// What strentry and AppendVerLogFile answer: the text in a buffer of the library's own, made anew
// by each call; null when there is none, it does not fit, or memory runs out.
inline constexpr std::size_t kAnswerBytes = 255;
inline const char* answer(char*& last, std::optional<std::string_view> text) noexcept {
  HeapText buffer{static_cast<char*>(std::malloc(kAnswerBytes))};
  const bool is_kept = buffer != nullptr && text && store({buffer.get(), kAnswerBytes}, *text);
  // The text may be a part of the last answer.
  std::free(last);
  last = is_kept ? buffer.release() : nullptr;
  return last;
}

}  // namespace sit
