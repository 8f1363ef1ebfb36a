// Records, the list of them, and which ones a selector or key means.
#include <cstdlib>

#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "pelver/pelver.h"

namespace {

constexpr unsigned kOtherKinds = PK_FRAMEWORK | PK_MONITOR_MASK;

}  // namespace

extern "C" {

constinit PHMVER* pphm = nullptr;

PHMVER* createPHMVER() noexcept { return static_cast<PHMVER*>(std::calloc(1, sizeof(PHMVER))); }

void addPHMVERToList(PHMVER** list, PHMVER* record) noexcept {
  if (list == nullptr) return;
  while (*list != nullptr) list = &(*list)->next;
  *list = record;
}

int IsCorrectProduct(const PHMVER* record, int selector) noexcept {
  if (record == nullptr) return 0;
  const unsigned kinds = record->flags;
  if (selector == SEL_ANY) return 1;
  const bool wants_plain_kinds =
      selector == SEL_PRODUCT || selector == SEL_WEBCLIENT || selector == SEL_PRODUCT_AND_WEBCLIENT;
  if (wants_plain_kinds && (kinds & kOtherKinds) != 0) return 0;
  const auto has = [kinds](unsigned mask) { return (kinds & mask) != 0 ? 1 : 0; };
  switch (selector) {
    case SEL_WEBCLIENT:
      return has(PK_WEBCLIENT);
    case SEL_PRODUCT:
      return 1 - has(PK_WEBCLIENT);
    case SEL_FRAMEWORK:
      return has(PK_FRAMEWORK);
    case SEL_EXTRA:
      return has(PK_EXTRA);
    case SEL_FRAMEWORK_AND_EXTRA:
      return has(PK_FRAMEWORK | PK_EXTRA);
    case SEL_MONITOR:
      return has(PK_MONITOR_MASK);
    default:
      return 1;
  }
}

void RmPatchInfoPHM(char* version) noexcept {
  const std::string_view text = sit::text_of(version);
  const std::size_t point = text.find('.');
  if (point == std::string_view::npos) return;
  const std::size_t release_end = point + 3;
  if (text.size() <= release_end) return;
  const bool has_patch_number =
      release_end + 1 < text.size() && sit::is_digit(text[release_end + 1]);
  if (has_patch_number || text.find("SP") != std::string_view::npos) version[release_end] = '\0';
}

void ParseVerString(const char* version, PHMVER* record) noexcept {
  const std::string_view text = sit::text_of(version);
  const std::size_t point = text.find('.');
  if (record == nullptr || point == std::string_view::npos) return;
  record->major = sit::leading_number(sit::head(text, point));
  const std::string_view rest = sit::tail(text, point + 1);
  std::size_t digits = 0;
  while (digits < rest.size() && sit::is_digit(rest[digits])) ++digits;
  // A number that ends the text is no minor version: nothing says where it stops.
  if (digits < rest.size()) record->minor = sit::leading_number(sit::head(rest, digits));
}

}  // extern "C"

namespace sit {

short leading_number(std::string_view text) noexcept {
  constexpr int kMost = INT16_MAX;
  int number = 0;
  for (const char c : sit::without_leading_blanks(text)) {
    if (!is_digit(c)) break;
    number = number * 10 + (c - '0');
    if (number > kMost) return kMost;
  }
  return static_cast<short>(number);
}

}  // namespace sit
