// What both validations do with their properties file.
#pragma once

#include <concepts>
#include <string_view>

#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "sit/pelver.h"

namespace sit::obvalid {

// Makes `field`, which holds the name of the file last used, hold the one to use now: `named`, or
// what `own` gives when that is missing. False when memory runs out.
template <std::invocable Own>
[[nodiscard]] bool choose_file(char*& field, const char* named, Own own) noexcept {
  if (!is_missing(field) && text_of(field) == text_of(named)) return true;
  if (is_missing(named)) {
    replace_field(field, own().view());
  } else {
    replace_field(field, named);
  }
  return field != nullptr;
}

// Whether there is such a file, which the report calls `what`; it says so if not.
[[nodiscard]] bool is_file(const char* path, const char* what) noexcept;

// Says in the report when a file that an installation's files or tools name, and that exists, lies
// outside the directory where one would look for it. Links do not hide that.
void log_if_outside(const char* path, const char* directory) noexcept;

// Copies a properties file into the directory `destination`, its name followed by the
// installation's version; `announcement` takes the path and that name. Returns 0 or
// SIT_COPY_FAILED.
[[nodiscard]] int copy_properties(const PHMVER& record, const char* path, const char* destination,
                                  const char* announcement) noexcept;

}  // namespace sit::obvalid
