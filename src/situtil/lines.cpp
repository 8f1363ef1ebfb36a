#include "situtil/lines.h"

#include <cerrno>
#include <cstring>

#include "files.h"

namespace sit {

LineReader::LineReader(const char* path) noexcept
    : file_(open_for_reading(path == nullptr ? "" : path)),
      error_(file_.is_open() ? 0 : errno),
      name_(path),
      input_(file_.get(), path) {}

LineReader::LineReader(const TempFile& output) noexcept : name_(output.name()), input_(output) {}

std::size_t LineReader::read(char* bytes, std::size_t count) noexcept {
  if (error_ != 0) return 0;
  const std::size_t got = input_.read(bytes, count);
  if (got == 0) log_if_cut_off(input_, name_);
  return got;
}

// Reads until a whole line is there, or nothing more comes.
void LineReader::fill() noexcept {
  const std::size_t held = end_ - begin_;
  std::memmove(bytes_.data(), bytes_.data() + begin_, held);
  begin_ = 0;
  end_ = held;
  while (!at_end_ && end_ < kLineLength) {
    const std::size_t got = read(bytes_.data() + end_, bytes_.size() - end_);
    at_end_ = got == 0;
    end_ += got;
  }
}

bool LineReader::next(Line& line) noexcept {
  const auto held_line = [this] {
    const std::string_view longest = head({bytes_.data() + begin_, end_ - begin_}, kLineLength);
    const std::size_t newline = longest.find('\n');
    return newline == std::string_view::npos ? longest : head(longest, newline + 1);
  };
  line.bytes = held_line();
  if (line.bytes.size() < kLineLength && !line.bytes.ends_with('\n')) {
    fill();
    line.bytes = held_line();
  }
  begin_ += line.bytes.size();
  return !line.bytes.empty();
}

std::string_view LineReader::read_beginning(std::span<char> bytes) noexcept {
  std::size_t held = 0;
  while (held < bytes.size()) {
    const std::size_t got = read(bytes.data() + held, bytes.size() - held);
    if (got == 0) break;
    held += got;
  }
  return {bytes.data(), held};
}

}  // namespace sit
