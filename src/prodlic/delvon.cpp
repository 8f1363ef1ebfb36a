// The files of the monitoring product.
#include <optional>
#include <string_view>

#include "commfile.h"
#include "commutils/views.h"
#include "file_status.h"
#include "pelver/installations.h"
#include "prodlic/prodlic.h"
#include "situtil/lines.h"
#include "situtil/listing.h"
#include "situtil/path.h"

namespace sit::prodlic {
namespace {

constexpr std::string_view kSetting = "SET delvonConfigDir";

// The value of the first line that has the setting: empty when it has none, nothing when no line
// has it.
std::optional<LineText> find_configuration_directory(LineReader& init_file) noexcept {
  for (Line line; init_file.next(line);) {
    const std::size_t setting = line.content().find(kSetting);
    if (setting == std::string_view::npos) continue;
    const std::string_view rest = tail(line.content(), setting + kSetting.size());
    const std::size_t equals = rest.find('=');
    if (equals == std::string_view::npos) return LineText{};
    return line_text(without_leading_blanks(tail(rest, equals + 1)));
  }
  return std::nullopt;
}

void copy_from(std::string_view from, std::string_view name, const char* to) noexcept {
  if (Path source; compose_path(source, {from, "/", name})) {
    copy_by_command(source.c_str(), to);
  }
}

void copy_configuration(const char* init_file, const char* to) noexcept {
  LineReader reader{init_file};
  if (reader.error() != 0) return;
  const std::optional<LineText> directory = find_configuration_directory(reader);
  if (!directory) {
    log("Cannot find the delvonConfigDir setting in %s. Skipping copy of delvonweb.xml and "
        "delvon.xml.\n\n",
        init_file);
  } else if (directory->empty()) {
    log("Cannot find a value for delvonConfigDir. Skipping copy of delvonweb.xml and "
        "delvon.xml.\n\n");
  } else {
    copy_from(directory->view(), "delvonweb.xml", to);
    copy_from(directory->view(), "delvon.xml", to);
  }
}

const PHMVER* find_owner(const PHMVER& monitor) noexcept {
  if (monitor.pelVersion == nullptr) return nullptr;
  return pelver::installations().find([&monitor](const PHMVER& record) {
    return record.version != nullptr && text_of(record.version) == monitor.pelVersion;
  });
}

void copy_plugins_file(const PHMVER& monitor, const char* to) noexcept {
  const PHMVER* owner = find_owner(monitor);
  if (owner == nullptr) {
    log("(ERROR) Cannot not find Pelloran version %s for Delvon %s\n\n", monitor.pelVersion,
        monitor.version);
    return;
  }
  Path file;
  if (!compose_path(file, {text_of(owner->dir), "/AdminServerPlugins.dat"})) {
    return;
  }
  if (exists(file.c_str())) {
    copy_by_command(file.c_str(), to);
  } else {
    log("(ERROR) Cannot find %s. Skipping file copy.\n\n", file.c_str());
  }
}

}  // namespace

void copy_monitor_files(const char* directory, const PHMVER& record) noexcept {
  if (!exists(record.initFile)) {
    log("(ERROR)Cannot find %s. Skipping copy.\n", record.initFile);
  } else {
    copy_by_command(record.initFile, directory);
    copy_configuration(record.initFile, directory);
  }
  copy_plugins_file(record, directory);
}

}  // namespace sit::prodlic
