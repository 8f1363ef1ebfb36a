// Values of configuration lines, and the paths among them.
#include "commfile.h"
#include "commutils/views.h"
#include "sit/commutils.h"
#include "websvr/websvr.h"

namespace sit {

ConfValue read_value(std::string_view line) noexcept {
  line = head(line, line.find_first_of("\r\n"));
  line = tail(line, line.find_first_not_of(" \t"));
  if (!line.starts_with('"') && !line.starts_with('\'')) {
    const std::size_t end = line.find_first_of(" \t#");
    return {head(line, end), tail(line, end)};
  }
  const std::string_view quoted = tail(line, 1);
  const std::string_view value = head(quoted, quoted.find(line.front()));
  return {value, tail(quoted, value.size() + 1)};
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
