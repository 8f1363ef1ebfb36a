#include "obvalid/admin_server.h"

#include <cstdlib>
#include <string_view>

#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "file_status.h"
#include "pelver/installations.h"
#include "pelver/keys.h"

namespace sit::obvalid {
namespace {

constexpr unsigned kKindsWithoutPlugins = PK_WEBCLIENT | PK_FRAMEWORK | PK_MONITOR;
constexpr int kFirstRelease = 9;

bool is_of_version(const PHMVER& record, const char* version) noexcept {
  return version != nullptr && record.version != nullptr &&
         equal_ignoring_case(record.version, version) &&
         record.bitness == pelver::bitness_named_in(version);
}

// The first path in double quotes that exists; empty when none does.
Path find_existing(std::string_view text) noexcept {
  for (;;) {
    const std::size_t opening = text.find('"');
    if (opening == std::string_view::npos) return {};
    text = tail(text, opening + 1);
    const std::size_t closing = text.find('"');
    if (closing == std::string_view::npos) return {};
    Path path;
    if (path.append(head(text, closing)) && exists(path.c_str())) return path;
    text = tail(text, closing + 1);
  }
}

// Looks through the first line of the control script that uses the work directory: its defaults
// stand behind the variable and one character more.
Path find_in_control_script(const PHMVER& record) noexcept {
  constexpr std::string_view kVariable = "\"$WRKDIR\"";
  Path script;
  if (!compose_path(script, {text_of(record.dir), "/bin/peladsv"})) return {};
  LineReader reader{script.c_str()};
  for (Line line; reader.next(line);) {
    const std::size_t variable = line.text().find(kVariable);
    if (variable == std::string_view::npos) continue;
    return find_existing(tail(line.text(), variable + kVariable.size() + 1));
  }
  return {};
}

}  // namespace

LineText own_plugins_file(const PHMVER& record) noexcept {
  const std::string_view name = record.major == kFirstRelease
                                    ? "/AdminServerPlugins.dat"
                                    : "/properties/AdminServerPlugins.properties";
  LineText path;
  static_cast<void>(compose_path(path, {text_of(record.dir), name}));
  return path;
}

LineText default_plugins_file(const PHMVER& record) noexcept {
  const bool has_none =
      pelver::is_of_kind(record, kKindsWithoutPlugins) || record.major < kFirstRelease;
  return has_none ? LineText{} : own_plugins_file(record);
}

bool has_admin_server(const char* version) noexcept {
  return pelver::installations().find([version](const PHMVER& record) {
    return is_of_version(record, version) && exists(default_plugins_file(record).c_str());
  }) != nullptr;
}

PHMVER* find_plain_installation(const char* version) noexcept {
  return pelver::installations().find([version](const PHMVER& record) {
    return is_of_version(record, version) && pelver::belongs_to(record, SEL_PRODUCT);
  });
}

WorkDirectory find_work_directory(const char* version) noexcept {
  WorkDirectory directory;
  PHMVER* record = find_plain_installation(version);
  if (record == nullptr) return directory;
  directory.given = std::getenv("WRKDIR");
  if (directory.given == nullptr) directory.found = find_in_control_script(*record);
  if (directory.is_known()) replace_field(record->wrkDir, directory.c_str());
  return directory;
}

}  // namespace sit::obvalid
