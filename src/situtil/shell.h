// Texts as words of a shell command.
#pragma once

#include <string_view>

#include "commutils/bounded_text.h"

namespace sit {

// A command line as the shell gets it. The capacities of commands count their words as they stand;
// what quoting adds, at most as much again, has room beside that.
using CommandLine = BoundedText<2048>;

// Appends `text` between double quotes so that the shell takes it as it stands. False when it does
// not fit.
[[nodiscard]] inline bool append_quoted(CommandLine& command, std::string_view text) noexcept {
  bool fits = command.append("\"");
  for (const char& c : text) {
    constexpr std::string_view kSpecial = "\"\\$`";
    if (kSpecial.find(c) != std::string_view::npos) fits = fits && command.append("\\");
    fits = fits && command.append({&c, 1});
  }
  return fits && command.append("\"");
}

// Appends `text` as one word: as it is when the shell has no say in it, else between quotes.
[[nodiscard]] inline bool append_word(CommandLine& command, std::string_view text) noexcept {
  constexpr std::string_view kPlain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-./+:,@%=";
  const bool is_plain = text.find_first_not_of(kPlain) == std::string_view::npos;
  return is_plain ? command.append(text) : append_quoted(command, text);
}

}  // namespace sit
