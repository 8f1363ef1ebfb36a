#include "pelver/installations.h"

#include <cstdlib>

namespace sit::pelver {

bool belongs_to(const PHMVER& record, int selector) noexcept {
  const bool is_other = is_framework(record) || is_monitor(record);
  switch (selector) {
    case SEL_PRODUCT:
      return !is_other && !is_web_client(record);
    case SEL_WEBCLIENT:
      return !is_other && is_web_client(record);
    case SEL_PRODUCT_AND_WEBCLIENT:
      return !is_other;
    case SEL_FRAMEWORK:
      return is_framework(record);
    case SEL_EXTRA:
      return is_of_kind(record, PK_EXTRA);
    case SEL_FRAMEWORK_AND_EXTRA:
      return is_of_kind(record, PK_FRAMEWORK | PK_EXTRA);
    case SEL_MONITOR:
      return is_monitor(record);
    default:
      return true;
  }
}

PHMVER* new_record() noexcept { return static_cast<PHMVER*>(std::calloc(1, sizeof(PHMVER))); }

void append_to_list(PHMVER*& list, PHMVER* record) noexcept {
  PHMVER** end = &list;
  while (*end != nullptr) end = &(*end)->next;
  *end = record;
}

}  // namespace sit::pelver
