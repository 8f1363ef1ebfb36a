// Values of configuration lines, and the paths among them.
#include <cerrno>

#include "commfile.h"
#include "commutils/views.h"
#include "files.h"
#include "sit/commutils.h"
#include "websvr/websvr.h"

namespace sit {

ConfReader::ConfReader(const char* path) noexcept
    : path_(path),
      file_(open_for_reading(path == nullptr ? "" : path)),
      error_(file_.is_open() ? 0 : errno),
      reader_(file_.get()) {}

bool ConfReader::next(std::string_view& line) noexcept {
  Piece piece;
  if (!reader_.next(piece)) return false;
  line = up_to_nul(piece.text);
  goes_on_ = piece.goes_on;
  return true;
}

bool ConfReader::cuts(const ConfValue& value) const noexcept {
  if (!goes_on_ || !value.is_open) return false;
  log_cut_value(path_);
  return true;
}

ConfValue read_value(std::string_view line) noexcept {
  const std::size_t line_end = line.find_first_of("\r\n");
  const bool has_end = line_end != std::string_view::npos;
  line = head(line, line_end);
  line = tail(line, line.find_first_not_of(" \t"));
  if (!line.starts_with('"') && !line.starts_with('\'')) {
    const std::size_t end = line.find_first_of(" \t#");
    return {head(line, end), tail(line, end), !has_end && end == std::string_view::npos};
  }
  const std::string_view quoted = tail(line, 1);
  const std::size_t end = quoted.find(line.front());
  const std::string_view value = head(quoted, end);
  return {value, tail(quoted, value.size() + 1), !has_end && end == std::string_view::npos};
}

std::string_view without_trailing_slash(std::string_view path) noexcept {
  if (path.ends_with('/') || path.ends_with('\\')) path.remove_suffix(1);
  return path;
}

bool make_absolute(Path& absolute, std::string_view path, std::string_view base) noexcept {
  if (path.starts_with('/')) return compose(absolute, "The path", {path});
  return compose(absolute, "The path", {base, "/", path});
}

}  // namespace sit

extern "C" {

void GetConfPathName(const char* text, char* output) noexcept {
  if (output == nullptr) return;
  sit::Path value;
  static_cast<void>(sit::compose(value, "The value", {sit::read_value(sit::text_of(text)).text}));
  stcopy(output, value.c_str());
}

void MakeAbsolutePath(const char* path, const char* base, char* output) noexcept {
  if (output == nullptr) return;
  sit::Path absolute;
  static_cast<void>(sit::make_absolute(absolute, sit::text_of(path), sit::text_of(base)));
  stcopy(output, absolute.c_str());
}

int IsAbsolutePath(const char* path) noexcept {
  return sit::text_of(path).starts_with('/') ? 1 : 0;
}

void StripTrailingSlash(char* path) noexcept {
  if (path != nullptr) path[sit::without_trailing_slash(path).size()] = '\0';
}

}  // extern "C"
