// The one open report, for the library's own use.
#pragma once

#include <array>
#include <cstddef>
#include <initializer_list>
#include <string_view>

#include "commutils/bounded_text.h"
#include "commutils/excerpt.h"
#include "handles.h"
#include "sit/commfile.h"

// What the library itself writes takes only such conversions as the compiler can check.
// NOLINTBEGIN(readability-redundant-declaration)
extern "C" [[gnu::format(printf, 1, 2)]] int LogMsg(const char* format, ...) noexcept;
extern "C" [[gnu::format(printf, 1, 2)]] int LogMsgV(const char* format, ...) noexcept;
// NOLINTEND(readability-redundant-declaration)

namespace sit {

inline constexpr const char* kVersion = "11.6";

// LogMsg with a format that a table or a caller holds, which the compiler cannot check.
template <typename... Arguments>
void log_computed(const char* format, Arguments... arguments) noexcept {
  using Unchecked = int (*)(const char*, ...) noexcept;
  const Unchecked log = LogMsg;
  log(format, arguments...);
}

// Writes bytes of any kind, NUL included, and flushes.
int log_bytes(std::string_view bytes) noexcept;

// Writes the text into each report at most once; `said_in`, at first 0, keeps in mind which was the
// last.
void log_once(unsigned& said_in, const char* text) noexcept;

// Makes a new and empty file the report, with its header. The path is the file's.
void begin_report_in(UniqueFd file, const char* path) noexcept;

// What a report says when a text does not fit where it is needed and so is not used.
class TooLong {
 public:
  TooLong(std::string_view what, const Excerpt& text, std::size_t max_length) noexcept;
  [[nodiscard]] const char* c_str() const noexcept { return message_.data(); }

 private:
  std::array<char, 512> message_{};
};

// Makes `text` of the pieces. When they do not fit, the report says so and the result is false.
template <std::size_t Bytes>
[[nodiscard]] bool compose(BoundedText<Bytes>& text, std::string_view what,
                           std::initializer_list<std::string_view> pieces) noexcept {
  text = BoundedText<Bytes>{};
  if (text.append(pieces)) return true;
  LogString(TooLong{what, pieces, text.kMaxLength}.c_str());
  return false;
}

}  // namespace sit
