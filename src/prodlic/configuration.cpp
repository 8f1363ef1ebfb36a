// The product configuration of one installation.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include "commfile.h"
#include "commutils/bounded_text.h"
#include "commutils/views.h"
#include "session.h"
#include "sit/prodlic.h"
#include "sit/situtil.h"
#include "situtil/command.h"
#include "situtil/listing.h"
#include "situtil/path.h"

namespace {

constexpr int kNamedByEnvironment = 3;
constexpr int kDerived = 4;
constexpr std::size_t kCommandLength = 511;
// What must fit behind the directory: a configuration file's name, then "/installd.ini".
constexpr std::size_t kConfigurationRoom = 11;
constexpr std::size_t kInstallerRecordRoom = 13;

bool is_monitor(const PHMVER& record) noexcept { return (record.flags & PK_MONITOR_MASK) != 0; }
bool is_framework(const PHMVER& record) noexcept { return (record.flags & PK_FRAMEWORK) != 0; }

void write_title(const PHMVER& record) noexcept {
  if (is_framework(record)) {
    LogTitle("Ambrelis Product and Licensing Information");
  } else if (is_monitor(record)) {
    LogTitle("DELVON Product and Licensing Information");
  } else if (record.flags == 0) {
    LogTitle("Pelloran Product and Licensing Information");
  }
}

// Whether the installation directory with a name of `more` characters behind it fits a path.
bool has_room_for(const PHMVER& record, std::size_t more) noexcept {
  return sit::text_of(record.dir).size() + more <= sit::Path::kMaxLength;
}

bool directory_exists(const PHMVER& record) noexcept {
  if (FileExists(record.dir) != 0) return true;
  LogMsg("\nERROR: PHM is set to %s but could not find such directory.\n", record.dir);
  return false;
}

// A framework installation has no listing tool: it borrows that of the last plain one, if any.
const PHMVER* owner_of_tool(const PHMVER& record) noexcept {
  if (!is_framework(record)) return &record;
  const PHMVER* owner = nullptr;
  for (const PHMVER* other = pphm; other != nullptr; other = other->next) {
    if (other->flags == 0) owner = other;
  }
  return owner;
}

std::string_view configuration_name(const PHMVER& record) noexcept {
  const bool is_second_generation = sit::text_of(record.version).starts_with('2');
  if (is_second_generation && is_monitor(record)) return "delvon.cfg";
  if (is_second_generation && is_framework(record)) return "emb.cfg";
  return "pelloran.cfg";
}

// Finds out the configuration file and says so. False when its name is too long.
bool announce_configuration(const PHMVER& record, char* configuration) noexcept {
  if (GenPelCfgName(configuration, &record) == kNamedByEnvironment) {
    LogMsg("PELCFG environment variable setting: %s\n", configuration);
    return sit::text_of(std::getenv("PELCFG")) == configuration;
  }
  LogMsg("Reading %s\n", configuration);
  return !sit::is_missing(configuration);
}

void run_listing_tool(const PHMVER& record) noexcept {
  const PHMVER* owner = owner_of_tool(record);
  sit::Path tool;
  const bool fits = owner == nullptr ||
                    sit::compose(tool, "The path", {sit::text_of(owner->dir), "/bin/showcfg"});
  if (p_sitfunctbl != nullptr) p_sitfunctbl->PrepareConfigName("PELCFG", &record);
  char configuration[SIT_PATH_BYTES] = "";
  if (!announce_configuration(record, configuration) || !fits) return;

  sit::Command command{kCommandLength};
  if (!command.quoted(tool.view()).raw(" ").quoted(configuration).fits()) return;
  LogMsgV("GetLicenseInfo: about to run  %s\n", command.c_str());
  command.run();
}

// Writes the file under its underlined path. Returns what reading it gave.
int write_file_section(const sit::Path& path) noexcept {
  std::array<char, SIT_PATH_BYTES> underline{};
  std::fill_n(underline.begin(), path.size(), '=');
  LogMsg("\nContents of: %s\n=============%s\n\n", path.c_str(), underline.data());
  LogMsgV("GetLicenseInfo: about to read  %s\n", path.c_str());
  return ReadTextFile(path.c_str());
}

bool keeps_installer_record(const PHMVER& record) noexcept {
  const std::string_view version = sit::text_of(record.version);
  return version.find("8.") == std::string_view::npos &&
         version.find("9.0") == std::string_view::npos;
}

void write_installer_record(const PHMVER& record) noexcept {
  sit::Path path;
  if (!sit::compose(path, "The path", {sit::text_of(record.dir), "/installd.ini"})) return;
  if (const int error = write_file_section(path); error != 0) {
    LogMsg("Could not open %s, errno = %d\n", path.c_str(), error);
  }
}

void write_addons(const PHMVER& record) noexcept {
  sit::Path path;
  if (record.flags != 0 || !sit::compose(path, "The path", {sit::text_of(record.dir), "/addons"}) ||
      FileExists(path.c_str()) == 0) {
    return;
  }
  if (const int error = write_file_section(path); error != 0) {
    LogMsg("Cound not open addons file %s, errno = %d\n", path.c_str(), error);
  }
}

}  // namespace

extern "C" {

int GetLicenseInfo(PHMVER* record) noexcept {
  if (record == nullptr) return 0;
  write_title(*record);
  if (!has_room_for(*record, kConfigurationRoom)) {
    LogMsgV("ERROR: GetLicenseInfo - path too long\n");
    return 1;
  }
  if (!directory_exists(*record)) return 0;
  run_listing_tool(*record);
  if (!keeps_installer_record(*record)) return 0;
  LogMsgV("\nTrying to find installd.ini\n\n");
  if (!has_room_for(*record, kInstallerRecordRoom)) return 1;
  write_installer_record(*record);
  write_addons(*record);
  return 0;
}

int GenPelCfgName(char* destination, const PHMVER* record) noexcept {
  if (destination == nullptr || record == nullptr) return kDerived;
  if (const char* named = std::getenv("PELCFG"); named != nullptr) {
    constexpr std::size_t kNamedBytes = SIT_PATH_BYTES - 1;
    if (!sit::store({destination, kNamedBytes}, named)) {
      LogString(sit::TooLong{"The value of PELCFG", {named}, kNamedBytes - 1}.c_str());
    }
    return kNamedByEnvironment;
  }
  destination[0] = '\0';
  sit::Path path;
  if (sit::compose(path, "The path",
                   {sit::text_of(record->dir), "/", configuration_name(*record)})) {
    static_cast<void>(sit::store({destination, SIT_PATH_BYTES}, path.view()));
  }
  return kDerived;
}

int GetFileListInfo(const PHMVER* record) noexcept {
  if (record == nullptr || !directory_exists(*record)) return 0;
  sit::list_directory("-lLR", sit::text_of(record->dir), kCommandLength);
  if ((record->flags & PK_WEBCLIENT) != 0) GetCommonFilesListInfo();
  return 0;
}

int GetCommonFilesListInfo() noexcept { return 0; }

}  // extern "C"
