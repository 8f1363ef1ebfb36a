#include "situtil/command.h"

#include "commfile.h"
#include "commutils/views.h"
#include "situtil/capture.h"

namespace sit {
namespace {

bool is_plain(std::string_view text) noexcept {
  constexpr std::string_view kPlain =
      "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-./+:,@%";
  return text.find_first_not_of(kPlain) == std::string_view::npos;
}

}  // namespace

void Command::put(std::string_view text) noexcept {
  written_.append(text);
  static_cast<void>(line_.append(text));
}

// Bytes from 0x80 on stand between single quotes: in some locales they and the byte behind them are
// one character, and a "\" would then be no escape, or be one that nobody wrote.
void Command::put_quoted(std::string_view text) noexcept {
  constexpr std::string_view kSpecial = "\"\\$`";
  bool is_high = false;
  put("\"");
  for (const char& c : text) {
    if (is_high != (static_cast<unsigned char>(c) >= 0x80)) {
      put(is_high ? "'\"" : "\"'");
      is_high = !is_high;
    }
    if (kSpecial.find(c) != std::string_view::npos) put("\\");
    put({&c, 1});
  }
  put(is_high ? "'" : "\"");
}

void Command::put_word(std::string_view text) noexcept {
  is_plain(text) ? put(text) : put_quoted(text);
}

Command& Command::raw(std::string_view text) noexcept { return written(text, text); }

Command& Command::quoted(std::string_view text) noexcept {
  for (const std::string_view piece : {std::string_view{"\""}, text, std::string_view{"\""}}) {
    stated_.append(piece);
  }
  put_quoted(text);
  return *this;
}

Command& Command::word(std::string_view text) noexcept {
  stated_.append(text);
  put_word(text);
  return *this;
}

Command& Command::words(std::string_view text) noexcept {
  constexpr std::string_view kMeaningful = "\n\"'\\$`|&;<>()*?[]{}";
  constexpr std::string_view kMeaningfulFirst = "-~#";
  stated_.append(" ");
  stated_.append(text);
  if (text.find_first_of(kMeaningful) != std::string_view::npos) has_mere_words_ = false;
  for (std::string_view word = take_word(text); !word.empty(); word = take_word(text)) {
    if (kMeaningfulFirst.find(word.front()) != std::string_view::npos) has_mere_words_ = false;
    put(" ");
    put_word(word);
  }
  return *this;
}

Command& Command::written(std::string_view stated, std::string_view text) noexcept {
  stated_.append(stated);
  put(text);
  return *this;
}

bool Command::fits() const noexcept {
  const bool is_too_long = stated_.length() > max_length_;
  if (!is_too_long && written_.length() <= kMaxLength) return true;
  log_text(TooLong{"The command", is_too_long ? stated_ : written_,
                   is_too_long ? max_length_ : kMaxLength}
               .view());
  return false;
}

void Command::run() const noexcept {
  if (fits()) log_output_of(c_str());
}

}  // namespace sit
