// Text helpers that stay within libc: std::string_view's own checked operations would pull in
// the C++ runtime's exceptions.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>

namespace sit {

// The text that a C pointer names; a null pointer counts as an empty text.
inline std::string_view text_of(const char* text) noexcept {
  return text == nullptr ? std::string_view{} : std::string_view{text};
}

inline bool contains(std::string_view text, std::string_view part) noexcept {
  return text.find(part) != std::string_view::npos;
}

inline bool is_missing(const char* text) noexcept { return text == nullptr || *text == '\0'; }

// The part of `text` before `count`, and the part from there on.
inline std::string_view head(std::string_view text, std::size_t count) noexcept {
  return {text.data(), count < text.size() ? count : text.size()};
}
inline std::string_view tail(std::string_view text, std::size_t count) noexcept {
  const std::size_t skipped = count < text.size() ? count : text.size();
  return {text.data() + skipped, text.size() - skipped};
}

// As a C text: binary files hold NUL characters.
inline std::string_view up_to_nul(std::string_view text) noexcept {
  return head(text, text.find('\0'));
}

inline std::string_view without_leading_blanks(std::string_view text) noexcept {
  while (text.starts_with(' ')) text.remove_prefix(1);
  return text;
}

inline std::string_view without_line_end(std::string_view line) noexcept {
  if (line.ends_with('\n')) line.remove_suffix(1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

// Takes the first word off `text`, of those that blanks part; empty when there is none left.
inline std::string_view take_word(std::string_view& text) noexcept {
  constexpr std::string_view kBlanks = " \t";
  text = tail(text, text.find_first_not_of(kBlanks));
  const std::string_view word = head(text, text.find_first_of(kBlanks));
  text = tail(text, word.size());
  return word;
}

inline bool is_digit(char c) noexcept { return c >= '0' && c <= '9'; }

inline char to_lower(char c) noexcept {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

inline bool equal_ignoring_case(std::string_view left, std::string_view right) noexcept {
  return std::ranges::equal(left, right, {}, to_lower, to_lower);
}

inline bool starts_ignoring_case(std::string_view text, std::string_view start) noexcept {
  return equal_ignoring_case(head(text, start.size()), start);
}

// Writes the bytes of `text` to `to` and returns where they end.
inline char* put(char* to, std::string_view text) noexcept {
  if (!text.empty()) std::memcpy(to, text.data(), text.size());
  return to + text.size();
}

// The same with a terminator, to which it returns a pointer.
inline char* put_text(char* to, std::string_view text) noexcept {
  char* end = put(to, text);
  *end = '\0';
  return end;
}

// Stores `text` with a terminator in `field` when it fits whole; else leaves the field alone.
[[nodiscard]] inline bool store(std::span<char> field, std::string_view text) noexcept {
  if (text.size() >= field.size()) return false;
  put_text(field.data(), text);
  return true;
}

}  // namespace sit
