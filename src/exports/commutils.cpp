#include "sit/commutils.h"

#include <algorithm>
#include <span>

#include "commutils/fields.h"
#include "commutils/heap_text.h"
#include "commutils/message.h"
#include "commutils/numbers.h"
#include "commutils/text.h"
#include "commutils/views.h"

using namespace sit;

namespace {

// The result of strentry; the next call replaces it.
constinit char* last_field = nullptr;

int write(const NumberText& number, char* output) noexcept {
  return static_cast<int>(put_text(output, number.view()) - output);
}

std::span<const unsigned char> bytes_of(const void* bytes, int count) noexcept {
  if (bytes == nullptr || count < 0) return {};
  return {static_cast<const unsigned char*>(bytes), static_cast<std::size_t>(count)};
}

}  // namespace

extern "C" {

void msgsub(char* output, const char* format, va_list arguments) noexcept {
  if (output != nullptr) format_message(output, format, arguments);
}

int intoal(int value, char* output) noexcept { return write(NumberText::decimal(value), output); }

int intoan(int value, char* output) noexcept {
  return intoal(static_cast<std::int16_t>(value), output);
}

int intohl2(std::uint32_t value, char* output) noexcept {
  return write(NumberText::hexadecimal(value), output);
}

int stlen(const char* text) noexcept { return static_cast<int>(text_of(text).size()); }

char* stcopy(char* destination, const char* source) noexcept {
  return put_text(destination, text_of(source));
}

void reversen(char* text, int count) noexcept {
  if (text != nullptr && count > 0) std::reverse(text, text + count);
}

void reverse(char* text) noexcept { reversen(text, stlen(text)); }

char* StringTrim(const char* text) noexcept {
  return text == nullptr ? nullptr : duplicate(trimmed(text)).release();
}

void StripCRLF(char* text) noexcept { strreplace(text, '\r', ' '); }

void strreplace(char* text, char find, char replacement) noexcept {
  if (text != nullptr) std::replace(text, text + stlen(text), find, replacement);
}

void strremove(char* text, const char* set) noexcept {
  if (text != nullptr && !is_missing(set)) remove_character(text, *set);
}

const char* strentry(unsigned int number, const char* text, char separator) noexcept {
  return answer(last_field, field_of(text_of(text), number, separator));
}

char* strtohex(const void* bytes, int count) noexcept {
  return to_hexadecimal(bytes_of(bytes, count), "").release();
}

char* strtohexmax(const void* bytes, int count, int largest) noexcept {
  const int shown = std::clamp(largest, 0, std::max(count, 0));
  return to_hexadecimal(bytes_of(bytes, shown), count > shown ? "..." : "").release();
}

}  // extern "C"
