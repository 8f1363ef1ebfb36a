#include "websvr/values.h"

#include "commutils/views.h"

namespace sit::websvr {

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
  return is_absolute(path) ? compose_path(absolute, {path})
                           : compose_path(absolute, {base, "/", path});
}

}  // namespace sit::websvr
