// Numbers as texts. Neither the locale nor the heap is asked.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace sit {

class NumberText {
 public:
  [[nodiscard]] static NumberText decimal(int value) noexcept;
  // "0x" and lower-case digits.
  [[nodiscard]] static NumberText hexadecimal(std::uint32_t value) noexcept;

  [[nodiscard]] const char* c_str() const noexcept { return text_.data(); }
  [[nodiscard]] std::string_view view() const noexcept { return text_.data(); }

 private:
  std::array<char, 12> text_{};
};

}  // namespace sit
