// The admin server of an installation: whether there is one, and where it works.
#include <cstdlib>
#include <string_view>

#include "commfile.h"
#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "obvalid/obvalid.h"
#include "sit/situtil.h"
#include "situtil/lines.h"
#include "situtil/path.h"

namespace {

constexpr unsigned kKindsWithoutPlugins = PK_WEBCLIENT | PK_FRAMEWORK | PK_MONITOR;
constexpr int kFirstRelease = 9;

bool is_of_version(const PHMVER& record, const char* version) noexcept {
  return version != nullptr && record.version != nullptr &&
         sit::equal_ignoring_case(record.version, version) && record.bitness == GetBitness(version);
}

// The first path in double quotes that exists.
bool find_existing(std::string_view text, sit::Path& path) noexcept {
  for (;;) {
    const std::size_t opening = text.find('"');
    if (opening == std::string_view::npos) return false;
    text = sit::tail(text, opening + 1);
    const std::size_t closing = text.find('"');
    if (closing == std::string_view::npos) return false;
    path = sit::Path{};
    if (path.append(sit::head(text, closing)) && FileExists(path.c_str()) != 0) return true;
    text = sit::tail(text, closing + 1);
  }
}

// Looks through the first line of the control script that uses the work directory: its defaults
// stand behind the variable and one character more.
bool find_in_control_script(const PHMVER& record, sit::Path& directory) noexcept {
  constexpr std::string_view kVariable = "\"$WRKDIR\"";
  sit::Path script;
  if (!sit::compose(script, "The path", {sit::text_of(record.dir), "/bin/peladsv"})) return false;
  sit::LineReader reader{script.c_str()};
  for (sit::Line line; reader.next(line);) {
    const std::size_t variable = line.text().find(kVariable);
    if (variable == std::string_view::npos) continue;
    return find_existing(sit::tail(line.text(), variable + kVariable.size() + 1), directory);
  }
  return false;
}

}  // namespace

PHMVER* sit::find_plain_installation(const char* version) noexcept {
  for (PHMVER* record = pphm; record != nullptr; record = record->next) {
    if (is_of_version(*record, version) && IsCorrectProduct(record, SEL_PRODUCT) != 0) {
      return record;
    }
  }
  return nullptr;
}

bool sit::own_plugins_file(const PHMVER& record, LineText& path) noexcept {
  const std::string_view name = record.major == kFirstRelease
                                    ? "/AdminServerPlugins.dat"
                                    : "/properties/AdminServerPlugins.properties";
  return compose(path, "The path", {text_of(record.dir), name});
}

extern "C" {

void GetAdminServerPluginsFile(const PHMVER* record, char* buffer) noexcept {
  if (buffer == nullptr) return;
  buffer[0] = '\0';
  if (record == nullptr || (record->flags & kKindsWithoutPlugins) != 0 ||
      record->major < kFirstRelease) {
    return;
  }
  if (sit::LineText path; sit::own_plugins_file(*record, path)) {
    static_cast<void>(sit::store({buffer, sit::LineText::kMaxLength + 1}, path.view()));
  }
}

int FindAdminServer(const char* version) noexcept {
  for (const PHMVER* record = pphm; record != nullptr; record = record->next) {
    if (!is_of_version(*record, version)) continue;
    char plugins_file[sit::LineText::kMaxLength + 1];
    GetAdminServerPluginsFile(record, plugins_file);
    if (FileExists(plugins_file) != 0) return 1;
  }
  return 0;
}

char* GetAdmSrvWrkDir(const char* version) noexcept {
  PHMVER* record = sit::find_plain_installation(version);
  if (record == nullptr) return nullptr;
  if (char* value = std::getenv("WRKDIR"); value != nullptr) {
    sit::replace_field(record->wrkDir, value);
    return value;
  }
  sit::Path directory;
  if (!find_in_control_script(*record, directory)) return nullptr;
  sit::replace_field(record->wrkDir, directory.view());
  return sit::duplicate(directory.view()).release();
}

}  // extern "C"
