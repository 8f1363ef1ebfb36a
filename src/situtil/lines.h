// Reading text files: the one loop behind every parser.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string_view>

#include "commutils/bounded_text.h"
#include "commutils/views.h"
#include "handles.h"
#include "situtil/input.h"

namespace sit {

// Characters of a line read from a file, its newline included. A longer one arrives in several
// pieces, and each of them is a line like any other.
inline constexpr std::size_t kLineLength = 254;

// A line, or a part of one, as a C text: there is always room for it.
using LineText = BoundedText<kLineLength + 1>;
[[nodiscard]] inline LineText line_text(std::string_view part) noexcept {
  LineText text;
  static_cast<void>(text.append(part));
  return text;
}

// A line as the file holds it, valid until the next one is read.
struct Line {
  std::string_view bytes;

  // As a C text, which a NUL ends; with its newline.
  [[nodiscard]] std::string_view text() const noexcept { return up_to_nul(bytes); }
  // The same without its line end.
  [[nodiscard]] std::string_view content() const noexcept { return without_line_end(text()); }
};

// A file being read. When that fails before the end of the file the report says so.
class LineReader {
 public:
  // Opens the file; a missing path is that of no file.
  explicit LineReader(const char* path) noexcept;
  // What a command printed.
  explicit LineReader(const TempFile& output) noexcept;

  // 0, or why the file could not be opened.
  [[nodiscard]] int error() const noexcept { return error_; }

  // False at the end of the file, or when it cannot be read any further.
  [[nodiscard]] bool next(Line& line) noexcept;

  // For files of which only the beginning counts, whatever its lines: fills `bytes` as far as they
  // go and returns those read.
  [[nodiscard]] std::string_view read_beginning(std::span<char> bytes) noexcept;

 private:
  void fill() noexcept;
  [[nodiscard]] std::size_t read(char* bytes, std::size_t count) noexcept;

  UniqueFd file_;
  int error_ = 0;
  const char* name_;
  Input input_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
  bool at_end_ = false;
  std::array<char, 4096> bytes_;
};

}  // namespace sit
