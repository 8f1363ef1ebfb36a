#include "commutils/text.h"

#include <array>
#include <cstdlib>

#include "commutils/fields.h"
#include "commutils/views.h"

namespace sit {

std::string_view trimmed(std::string_view text) noexcept {
  text = without_leading_blanks(text);
  while (text.ends_with(' ') || text.ends_with('\n')) text.remove_suffix(1);
  return text;
}

void remove_character(char* text, char dropped) noexcept {
  char* kept = text;
  for (const char* next = text; *next != '\0'; ++next) {
    // The character behind a dropped one stays, whatever it is.
    if (*next == dropped && *++next == '\0') break;
    *kept++ = *next;
  }
  *kept = '\0';
}

HeapText to_hexadecimal(std::span<const unsigned char> bytes, std::string_view ending) noexcept {
  constexpr std::string_view kDigits = "0123456789abcdef";
  constexpr std::size_t kPerByte = 3;
  HeapText text{
      static_cast<char*>(std::malloc(bytes.size() * kPerByte + ending.size() + sizeof '\0'))};
  if (text == nullptr) return text;
  char* end = text.get();
  for (const unsigned char byte : bytes) {
    const std::array<char, kPerByte> shown{kDigits[byte >> 4U], kDigits[byte & 0xFU], ' '};
    end = put(end, {shown.data(), shown.size()});
  }
  *put(end, ending) = '\0';
  return text;
}

RuleText rule(char character, std::size_t count) noexcept {
  RuleText text;
  for (std::size_t i = 0; i < count; ++i) static_cast<void>(text.append({&character, 1}));
  return text;
}

std::optional<std::string_view> field_of(std::string_view text, unsigned number,
                                         char separator) noexcept {
  if (!contains(text, {&separator, 1})) return text;
  for (unsigned field = 1;; ++field) {
    const std::size_t end = text.find(separator);
    if (field == number) return head(text, end);
    if (end == std::string_view::npos) return std::nullopt;
    text = tail(text, end + 1);
  }
}

}  // namespace sit
