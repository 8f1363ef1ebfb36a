// Text helpers: trimming, replacing, splitting, hexadecimal.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <span>
#include <string_view>

#include "commutils/fields.h"
#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "sit/commutils.h"

namespace {

constexpr std::size_t kHexPerByte = 3;

// The result of strentry; the next call replaces it.
constinit char* last_field = nullptr;

// `spare` bytes are there besides those of the digits.
sit::HeapText to_hex(std::span<const unsigned char> bytes, std::string_view ending,
                     std::size_t spare) noexcept {
  constexpr std::string_view kDigits = "0123456789abcdef";
  sit::HeapText text{static_cast<char*>(std::malloc(bytes.size() * kHexPerByte + spare))};
  if (text == nullptr) return text;
  char* end = text.get();
  for (const unsigned char byte : bytes) {
    const std::array<char, kHexPerByte> shown{kDigits[byte >> 4U], kDigits[byte & 0xFU], ' '};
    end = sit::put(end, {shown.data(), shown.size()});
  }
  *sit::put(end, ending) = '\0';
  return text;
}

std::span<const unsigned char> bytes_of(const void* bytes, int count) noexcept {
  if (bytes == nullptr || count < 0) return {};
  return {static_cast<const unsigned char*>(bytes), static_cast<std::size_t>(count)};
}

}  // namespace

std::optional<std::string_view> sit::field_of(std::string_view text, unsigned number,
                                              char separator) noexcept {
  if (text.find(separator) == std::string_view::npos) return text;
  for (unsigned field = 1;; ++field) {
    const std::size_t end = text.find(separator);
    if (field == number) return head(text, end);
    if (end == std::string_view::npos) return std::nullopt;
    text = tail(text, end + 1);
  }
}

extern "C" {

char* StringTrim(const char* text) noexcept {
  if (text == nullptr) return nullptr;
  std::string_view trimmed = sit::without_leading_blanks(text);
  while (trimmed.ends_with(' ') || trimmed.ends_with('\n')) trimmed.remove_suffix(1);
  return sit::duplicate(trimmed).release();
}

void StripCRLF(char* text) noexcept { strreplace(text, '\r', ' '); }

void strreplace(char* text, char find, char replacement) noexcept {
  if (text == nullptr) return;
  std::replace(text, text + stlen(text), find, replacement);
}

void strremove(char* text, const char* set) noexcept {
  if (text == nullptr || sit::is_missing(set)) return;
  char* kept = text;
  for (const char* next = text; *next != '\0'; ++next) {
    // The character behind a dropped one stays, whatever it is.
    if (*next == *set && *++next == '\0') break;
    *kept++ = *next;
  }
  *kept = '\0';
}

const char* strentry(unsigned int number, const char* text, char separator) noexcept {
  return sit::answer(last_field, sit::field_of(sit::text_of(text), number, separator));
}

char* strtohex(const void* bytes, int count) noexcept {
  return to_hex(bytes_of(bytes, count), "", 3).release();
}

char* strtohexmax(const void* bytes, int count, int largest) noexcept {
  const int shown = std::clamp(largest, 0, std::max(count, 0));
  return to_hex(bytes_of(bytes, shown), count > shown ? "..." : "", 4).release();
}

}  // extern "C"
