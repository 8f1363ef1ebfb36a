// Paths within their capacity.
#pragma once

#include <initializer_list>
#include <string_view>

#include "commfile.h"
#include "commutils/bounded_text.h"
#include "commutils/views.h"
#include "sit/codes.h"

namespace sit {

using Path = BoundedText<SIT_PATH_BYTES>;

// Joins the parts with "/" between them. False when the path does not fit; it is then empty.
template <std::size_t Bytes>
[[nodiscard]] bool join_path(BoundedText<Bytes>& path,
                             std::initializer_list<std::string_view> parts) noexcept {
  path = BoundedText<Bytes>{};
  bool is_first = true;
  for (const std::string_view part : parts) {
    if (!path.append({is_first ? std::string_view{} : std::string_view{"/"}, part})) {
      path = BoundedText<Bytes>{};
      return false;
    }
    is_first = false;
  }
  return true;
}

// Makes the path of the pieces. When they do not fit, the report says so and the result is false.
template <std::size_t Bytes>
[[nodiscard]] bool compose_path(BoundedText<Bytes>& path,
                                std::initializer_list<std::string_view> pieces) noexcept {
  return compose(path, "The path", pieces);
}

// What stands behind the last "/".
[[nodiscard]] inline std::string_view base_name(std::string_view path) noexcept {
  return tail(path, path.rfind('/') + 1);
}

}  // namespace sit
