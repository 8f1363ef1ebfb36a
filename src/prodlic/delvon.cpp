// The files of the monitoring product.
#include <optional>
#include <string_view>

#include "commfile.h"
#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "sit/prodlic.h"
#include "sit/situtil.h"
#include "situtil/lines.h"
#include "situtil/path.h"

namespace {

constexpr std::string_view kSetting = "SET delvonConfigDir";

// The value of the first line that has the setting: empty when it has none, nothing when no line
// has it.
std::optional<sit::LineText> find_configuration_directory(sit::LineReader& init_file) noexcept {
  for (sit::Line line; init_file.next(line);) {
    const std::size_t setting = line.content().find(kSetting);
    if (setting == std::string_view::npos) continue;
    const std::string_view rest = sit::tail(line.content(), setting + kSetting.size());
    const std::size_t equals = rest.find('=');
    if (equals == std::string_view::npos) return sit::LineText{};
    return sit::line_text(sit::without_leading_blanks(sit::tail(rest, equals + 1)));
  }
  return std::nullopt;
}

void copy_from(std::string_view from, std::string_view name, const char* to) noexcept {
  if (sit::Path source; sit::compose(source, "The path", {from, "/", name})) {
    MyCopy(source.c_str(), to);
  }
}

void copy_configuration(const char* init_file, const char* to) noexcept {
  sit::LineReader reader{init_file};
  if (reader.error() != 0) return;
  const std::optional<sit::LineText> directory = find_configuration_directory(reader);
  if (!directory) {
    LogMsg(
        "Cannot find the delvonConfigDir setting in %s. Skipping copy of delvonweb.xml and "
        "delvon.xml.\n\n",
        init_file);
  } else if (directory->empty()) {
    LogMsg(
        "Cannot find a value for delvonConfigDir. Skipping copy of delvonweb.xml and "
        "delvon.xml.\n\n");
  } else {
    copy_from(directory->view(), "delvonweb.xml", to);
    copy_from(directory->view(), "delvon.xml", to);
  }
}

const PHMVER* find_owner(const PHMVER& monitor) noexcept {
  for (const PHMVER* record = pphm; record != nullptr; record = record->next) {
    if (record->version != nullptr && monitor.pelVersion != nullptr &&
        sit::text_of(record->version) == monitor.pelVersion) {
      return record;
    }
  }
  return nullptr;
}

void copy_plugins_file(const PHMVER& monitor, const char* to) noexcept {
  const PHMVER* owner = find_owner(monitor);
  if (owner == nullptr) {
    LogMsg("(ERROR) Cannot not find Pelloran version %s for Delvon %s\n\n", monitor.pelVersion,
           monitor.version);
    return;
  }
  sit::Path file;
  if (!sit::compose(file, "The path", {sit::text_of(owner->dir), "/AdminServerPlugins.dat"})) {
    return;
  }
  if (FileExists(file.c_str()) != 0) {
    MyCopy(file.c_str(), to);
  } else {
    LogMsg("(ERROR) Cannot find %s. Skipping file copy.\n\n", file.c_str());
  }
}

}  // namespace

extern "C" int CopyDelvon_Files(const char* directory, const PHMVER* record) noexcept {
  if (directory == nullptr || record == nullptr) return 0;
  if (FileExists(record->initFile) == 0) {
    LogMsg("(ERROR)Cannot find %s. Skipping copy.\n", record->initFile);
  } else {
    MyCopy(record->initFile, directory);
    copy_configuration(record->initFile, directory);
  }
  copy_plugins_file(*record, directory);
  return 0;
}
