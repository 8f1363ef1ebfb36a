// Fields of a separated text, without copying them.
#pragma once

#include <optional>
#include <string_view>

namespace sit {

// Field `number` (from 1). A text without separator is its own every field.
[[nodiscard]] std::optional<std::string_view> field_of(std::string_view text, unsigned number,
                                                       char separator) noexcept;

}  // namespace sit
