// String primitives.
#include <utility>

#include "commutils/views.h"
#include "sit/commutils.h"

extern "C" int stlen(const char* text) noexcept {
  return static_cast<int>(sit::text_of(text).size());
}

extern "C" char* stcopy(char* destination, const char* source) noexcept {
  char* end = sit::put(destination, sit::text_of(source));
  *end = '\0';
  return end;
}

extern "C" void reversen(char* text, int count) noexcept {
  if (text == nullptr) return;
  for (int first = 0, last = count - 1; first < last; ++first, --last) {
    std::swap(text[first], text[last]);
  }
}

extern "C" void reverse(char* text) noexcept { reversen(text, stlen(text)); }
