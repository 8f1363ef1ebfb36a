// Operations on texts in place, and texts made of bytes.
#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "commutils/bounded_text.h"
#include "commutils/heap_text.h"

namespace sit {

// Without its leading blanks and its trailing blanks and newlines.
[[nodiscard]] std::string_view trimmed(std::string_view text) noexcept;

// Drops every `dropped` from a C text, but of two in a row only the first.
void remove_character(char* text, char dropped) noexcept;

// Two digits and a blank for each byte, then `ending`; null when memory runs out.
[[nodiscard]] HeapText to_hexadecimal(std::span<const unsigned char> bytes,
                                      std::string_view ending) noexcept;

// A line of one character, `count` times.
using RuleText = BoundedText<100>;
[[nodiscard]] RuleText rule(char character, std::size_t count) noexcept;

}  // namespace sit
