// Discovery of installations, for the library's own use.
#pragma once

#include <cstdio>
#include <initializer_list>
#include <string_view>

#include "sit/pelver.h"
#include "situtil/path.h"

namespace sit {

inline constexpr const char* kLauncher = "/usr/bin/pel";

// What a version text of an installation's messages calls the product.
[[nodiscard]] std::string_view product_name(const PHMVER& record) noexcept;

// Writes the pieces in a row.
void print(FILE* output, std::initializer_list<std::string_view> pieces) noexcept;

// Joins `name` to the record's directory. When the path does not fit, says so in `output` and
// returns false.
[[nodiscard]] bool path_in_installation(const PHMVER& record, std::string_view name, Path& path,
                                        FILE* output) noexcept;

// The number that the digits at the start of `text` form, within 16 bits; 0 when there are none.
[[nodiscard]] short leading_number(std::string_view text) noexcept;

}  // namespace sit
