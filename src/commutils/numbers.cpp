#include "commutils/numbers.h"

#include <cstdio>

namespace sit {

NumberText NumberText::decimal(int value) noexcept {
  NumberText number;
  std::snprintf(number.text_.data(), number.text_.size(), "%d", value);
  return number;
}

NumberText NumberText::hexadecimal(std::uint32_t value) noexcept {
  NumberText number;
  std::snprintf(number.text_.data(), number.text_.size(), "0x%x", value);
  return number;
}

}  // namespace sit
