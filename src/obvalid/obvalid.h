// What the parts of the broker and admin-server validation share.
#pragma once

#include <concepts>
#include <cstdlib>
#include <memory>
#include <string_view>

#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "sit/obvalid.h"
#include "situtil/lines.h"
#include "situtil/path.h"

namespace sit {

// A line of one character, `count` times.
using RuleText = BoundedText<100>;
[[nodiscard]] RuleText rule(char character, std::size_t count) noexcept;

// ---- Properties files ----

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

// Whether a mode of FileExists is that of a directory.
[[nodiscard]] bool is_directory(unsigned mode) noexcept;

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

// The first plain installation of the version; null when there is none.
[[nodiscard]] PHMVER* find_plain_installation(const char* version) noexcept;

// ---- Admin server ----

// Where the installation's own plugins file would be, its release being 9 or later. False when
// the path does not fit; the report says so.
[[nodiscard]] bool own_plugins_file(const PHMVER& record, LineText& path) noexcept;

// Makes it the content of obroker.
void use_location(const LineText& location) noexcept;

// The broker properties file to validate, now in obroker.
struct BrokerLocation {
  int code = SIT_OK;  // another one: the validation ends with it
  int status = 0;     // what reading the plugins file gave
  bool is_default = false;
  bool exists = false;  // else there is nothing to validate
};

// Finds it through the plugins file `named`, a missing name standing for the installation's own,
// and writes what it finds and misses into the report.
[[nodiscard]] BrokerLocation locate_broker_properties(PHMVER& record, const char* named) noexcept;

// Owns a result of GetAdmSrvWrkDir, which may be the environment's own text.
struct FreeWorkDirectory {
  void operator()(char* text) const noexcept {
    if (text != std::getenv("WRKDIR")) std::free(text);
  }
};
using WorkDirectory = std::unique_ptr<char, FreeWorkDirectory>;

// ---- Parameter files ----

// Writes the section of the installation's own parameter file and of all those in the list, which
// is then empty.
void log_parameter_files(const char* directory) noexcept;

void forget_parameter_files() noexcept;

}  // namespace sit
