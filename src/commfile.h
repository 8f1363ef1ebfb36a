// The one open report, for the library's own use.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "sit/commfile.h"

namespace sit {

inline constexpr const char* kVersion = "11.6";

// Writes bytes of any kind, NUL included, and flushes.
int log_bytes(std::string_view bytes) noexcept;

// What a report says when a text does not fit where it is needed, and so is not used.
class TooLong {
 public:
  TooLong(std::string_view what, std::string_view text, std::size_t max_length) noexcept;
  [[nodiscard]] const char* c_str() const noexcept { return message_.data(); }

 private:
  std::array<char, 512> message_{};
};

}  // namespace sit
