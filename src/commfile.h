// The one open report.
#pragma once

#include <array>
#include <cstdarg>
#include <cstddef>
#include <initializer_list>
#include <string_view>

#include "commutils/bounded_text.h"
#include "commutils/excerpt.h"
#include "handles.h"
#include "sit/codes.h"

namespace sit {

// As LogOpen and LogClose.
int open_report(const char* path, int mode) noexcept;
int close_report(int final) noexcept;

// Makes a new and empty file the report, with its header. The path is the file's.
void begin_report_in(UniqueFd file, const char* path) noexcept;

void write_header() noexcept;

// The writers do nothing while no report is open. Each returns 0, or EOF when it cannot write.

// Writes bytes of any kind, NUL included, and flushes.
int log_text(std::string_view bytes) noexcept;

// Writes a message of the library's formatter, by such conversions as the compiler can check.
[[gnu::format(printf, 1, 2)]] int log(const char* format, ...) noexcept;
// The same in verbose mode only, marked as such.
[[gnu::format(printf, 1, 2)]] int log_verbose(const char* format, ...) noexcept;

int log_formatted(const char* format, std::va_list arguments) noexcept;
int log_verbose_formatted(const char* format, std::va_list arguments) noexcept;

// Writes a message of any length, given in pieces.
int log_pieces(std::initializer_list<std::string_view> pieces) noexcept;

// With a format that a table or a caller holds, which the compiler cannot check.
template <typename... Arguments>
void log_computed(const char* format, Arguments... arguments) noexcept {
  using Unchecked = int (*)(const char*, ...) noexcept;
  const Unchecked unchecked = log;
  unchecked(format, arguments...);
}

// Writes the text into each report at most once; `said_in`, at first 0, keeps in mind which was the
// last.
void log_once(unsigned& said_in, std::string_view text) noexcept;

// A title, a line of as many "=" and an empty line.
void log_title(std::string_view title) noexcept;

// A line of 80 "=" and an empty line.
int log_rule() noexcept;

// As logtime.
int write_time(char* buffer) noexcept;

// Up to and with the last "/".
[[nodiscard]] std::string_view directory_part(std::string_view path) noexcept;

// What a report says when a text does not fit where it is needed and so is not used.
class TooLong {
 public:
  TooLong(std::string_view what, const Excerpt& text, std::size_t max_length) noexcept;
  [[nodiscard]] std::string_view view() const noexcept { return message_.data(); }

 private:
  std::array<char, 512> message_{};
};

// Makes `text` of the pieces. When they do not fit, the report says so and the result is false.
template <std::size_t Bytes>
[[nodiscard]] bool compose(BoundedText<Bytes>& text, std::string_view what,
                           std::initializer_list<std::string_view> pieces) noexcept {
  text = BoundedText<Bytes>{};
  if (text.append(pieces)) return true;
  log_text(TooLong{what, pieces, text.kMaxLength}.view());
  return false;
}

}  // namespace sit
