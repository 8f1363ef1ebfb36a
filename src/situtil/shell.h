// Texts as words of a shell command.
#pragma once

#include <string_view>

#include "commutils/bounded_text.h"
#include "commutils/views.h"

namespace sit {

// A command line as the shell gets it. The capacities of commands count their words as they stand;
// what quoting adds, at most twice as much again, has room beside that.
using CommandLine = BoundedText<3072>;

// Appends `text` between double quotes so that the shell takes it as it stands. False when it does
// not fit. Bytes from 0x80 on stand between single quotes: in some locales they and the byte behind
// them are one character, and a "\" would then be no escape, or be one that nobody wrote.
[[nodiscard]] inline bool append_quoted(CommandLine& command, std::string_view text) noexcept {
  bool fits = command.append("\"");
  bool is_high = false;
  for (const char& c : text) {
    constexpr std::string_view kSpecial = "\"\\$`";
    if (is_high != (static_cast<unsigned char>(c) >= 0x80)) {
      fits = fits && command.append(is_high ? "'\"" : "\"'");
      is_high = !is_high;
    }
    if (kSpecial.find(c) != std::string_view::npos) fits = fits && command.append("\\");
    fits = fits && command.append({&c, 1});
  }
  return fits && command.append(is_high ? "'" : "\"");
}

// Appends `text` as one word: as it is when the shell has no say in it, else between quotes.
[[nodiscard]] inline bool append_word(CommandLine& command, std::string_view text) noexcept {
  constexpr std::string_view kPlain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-./+:,@%";
  const bool is_plain = text.find_first_not_of(kPlain) == std::string_view::npos;
  return is_plain ? command.append(text) : append_quoted(command, text);
}

// Takes the first word off `text`, of those that blanks part; empty when there is none left.
[[nodiscard]] inline std::string_view take_word(std::string_view& text) noexcept {
  constexpr std::string_view kBlanks = " \t";
  text = tail(text, text.find_first_not_of(kBlanks));
  const std::string_view word = head(text, text.find_first_of(kBlanks));
  text = tail(text, word.size());
  return word;
}

// Appends `text` unquoted: its blanks part words. False when it does not fit, or when the shell
// would find more in it than words, or `cp` an option.
[[nodiscard]] inline bool append_words(CommandLine& command, std::string_view text) noexcept {
  constexpr std::string_view kMeaningful = "\n\"'\\$`|&;<>()*?[]{}";
  constexpr std::string_view kMeaningfulFirst = "-~#";
  if (text.find_first_of(kMeaningful) != std::string_view::npos) return false;
  for (std::string_view word = take_word(text); !word.empty(); word = take_word(text)) {
    if (kMeaningfulFirst.find(word.front()) != std::string_view::npos || !command.append(" ") ||
        !append_word(command, word)) {
      return false;
    }
  }
  return true;
}

}  // namespace sit
