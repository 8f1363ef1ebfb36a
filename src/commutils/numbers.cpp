// Number converters. They take no locale and no heap.
#include <climits>
#include <cstdint>
#include <cstdio>

#include "sit/commutils.h"

extern "C" int intoal(int value, char* output) noexcept {
  if (value == INT_MIN) return static_cast<int>(stcopy(output, "-2147483648") - output);
  int rest = value < 0 ? -value : value;
  int length = 0;
  do {
    output[length++] = static_cast<char>('0' + rest % 10);
    rest /= 10;
  } while (rest != 0);
  if (value < 0) output[length++] = '-';
  output[length] = '\0';
  reverse(output);
  return length;
}

extern "C" int intoan(int value, char* output) noexcept {
  return intoal(static_cast<std::int16_t>(value), output);
}

extern "C" int intohl2(std::uint32_t value, char* output) noexcept {
  constexpr std::size_t kBytes = sizeof "0xffffffff";
  return std::snprintf(output, kBytes, "0x%x", value);
}
