// The list of installations, and which of them a selector means.
#pragma once

#include <concepts>

#include "sit/pelver.h"

namespace sit::pelver {

// A list of records as a range.
class Installations {
 public:
  class Iterator {
   public:
    explicit Iterator(PHMVER* record) noexcept : record_(record) {}
    PHMVER& operator*() const noexcept { return *record_; }
    Iterator& operator++() noexcept {
      record_ = record_->next;
      return *this;
    }
    bool operator==(const Iterator&) const noexcept = default;

   private:
    PHMVER* record_;
  };

  explicit Installations(PHMVER* first) noexcept : first_(first) {}
  [[nodiscard]] Iterator begin() const noexcept { return Iterator{first_}; }
  [[nodiscard]] static Iterator end() noexcept { return Iterator{nullptr}; }
  [[nodiscard]] bool empty() const noexcept { return first_ == nullptr; }

  // The first record that meets the condition; null when none does.
  template <std::predicate<const PHMVER&> Condition>
  [[nodiscard]] PHMVER* find(Condition condition) const noexcept {
    for (PHMVER& record : *this) {
      if (condition(record)) return &record;
    }
    return nullptr;
  }

 private:
  PHMVER* first_;
};

[[nodiscard]] inline Installations installations() noexcept { return Installations{pphm}; }

[[nodiscard]] inline bool is_of_kind(const PHMVER& record, unsigned kinds) noexcept {
  return (record.flags & kinds) != 0;
}
[[nodiscard]] inline bool is_monitor(const PHMVER& record) noexcept {
  return is_of_kind(record, PK_MONITOR_MASK);
}
[[nodiscard]] inline bool is_framework(const PHMVER& record) noexcept {
  return is_of_kind(record, PK_FRAMEWORK);
}
[[nodiscard]] inline bool is_web_client(const PHMVER& record) noexcept {
  return is_of_kind(record, PK_WEBCLIENT);
}
[[nodiscard]] inline bool is_plain(const PHMVER& record) noexcept { return record.flags == 0; }

// As IsCorrectProduct.
[[nodiscard]] bool belongs_to(const PHMVER& record, int selector) noexcept;

[[nodiscard]] PHMVER* new_record() noexcept;

void append_to_list(PHMVER*& list, PHMVER* record) noexcept;

}  // namespace sit::pelver
