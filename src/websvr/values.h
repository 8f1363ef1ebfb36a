// Values of configuration lines, and the paths among them.
#pragma once

#include <string_view>

#include "situtil/path.h"

namespace sit::websvr {

// A value of a configuration line and what follows it, the closing quote left out.
struct ConfValue {
  std::string_view text;
  std::string_view rest;
};

[[nodiscard]] ConfValue read_value(std::string_view line) noexcept;

[[nodiscard]] std::string_view without_trailing_slash(std::string_view path) noexcept;

[[nodiscard]] inline bool is_absolute(std::string_view path) noexcept {
  return path.starts_with('/');
}

// False when the path does not fit; it is then empty.
[[nodiscard]] bool make_absolute(Path& absolute, std::string_view path,
                                 std::string_view base) noexcept;

}  // namespace sit::websvr
