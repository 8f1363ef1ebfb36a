// Building a command line for the shell.
#pragma once

#include <cstddef>
#include <string_view>

#include "commutils/bounded_text.h"
#include "commutils/excerpt.h"

namespace sit {

class Command {
 public:
  static constexpr std::size_t kMaxLength = 3071;

  // A command of at most `max_length` characters, its words counted as they stand. What quoting
  // adds, at most twice as much again, has room beside that.
  explicit Command(std::size_t max_length = kMaxLength) noexcept : max_length_(max_length) {}

  // Appends `text` as it stands, for the shell to interpret.
  Command& raw(std::string_view text) noexcept;

  // Appends `text` between double quotes so that the shell takes it as it stands.
  Command& quoted(std::string_view text) noexcept;

  // Appends `text` as one word: as it is when the shell has no say in it, else between quotes.
  Command& word(std::string_view text) noexcept;

  // Appends a blank and the words of `text`, which blanks part.
  Command& words(std::string_view text) noexcept;
  // Whether the shell finds nothing but words in them, and `cp` no option.
  [[nodiscard]] bool has_mere_words() const noexcept { return has_mere_words_; }

  // Appends `text`, which counts as `stated`.
  Command& written(std::string_view stated, std::string_view text) noexcept;

  // Whether the command fits. The report says so if not: it is never run cut.
  [[nodiscard]] bool fits() const noexcept;

  [[nodiscard]] const char* c_str() const noexcept { return line_.c_str(); }

  // Runs the command, if it fits, and copies what it prints into the report.
  void run() const noexcept;

 private:
  void put(std::string_view text) noexcept;
  void put_quoted(std::string_view text) noexcept;
  void put_word(std::string_view text) noexcept;

  std::size_t max_length_;
  Excerpt stated_;
  Excerpt written_;  // the line, and what does not fit there
  BoundedText<kMaxLength + 1> line_;
  bool has_mere_words_ = true;
};

}  // namespace sit
