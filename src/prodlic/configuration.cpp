// The product configuration of one installation.
#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include "commfile.h"
#include "commutils/views.h"
#include "file_status.h"
#include "pelver/installations.h"
#include "prodlic/prodlic.h"
#include "session.h"
#include "sit/codes.h"
#include "situtil/capture.h"
#include "situtil/command.h"
#include "situtil/listing.h"
#include "situtil/path.h"

namespace sit::prodlic {
namespace {

using pelver::is_framework;
using pelver::is_monitor;

constexpr int kNamedByEnvironment = 3;
constexpr int kDerived = 4;
constexpr std::size_t kCommandLength = 511;
// The room that a path must have behind the directory before anything is listed, and before
// "/installd.ini" is shown.
constexpr std::size_t kConfigurationRoom = 11;
constexpr std::size_t kInstallerRecordRoom = 13;

void write_title(const PHMVER& record) noexcept {
  if (is_framework(record)) {
    log_title("Ambrelis Product and Licensing Information");
  } else if (is_monitor(record)) {
    log_title("DELVON Product and Licensing Information");
  } else if (pelver::is_plain(record)) {
    log_title("Pelloran Product and Licensing Information");
  }
}

// Whether the installation directory with a name of `more` characters behind it fits a path.
bool has_room_for(const PHMVER& record, std::size_t more) noexcept {
  return text_of(record.dir).size() + more <= Path::kMaxLength;
}

bool directory_exists(const PHMVER& record) noexcept {
  if (exists(record.dir)) return true;
  log("\nERROR: PHM is set to %s but could not find such directory.\n", record.dir);
  return false;
}

// A framework installation has no listing tool: it borrows that of the last plain one, if any.
const PHMVER* owner_of_tool(const PHMVER& record) noexcept {
  if (!is_framework(record)) return &record;
  const PHMVER* owner = nullptr;
  for (const PHMVER& other : pelver::installations()) {
    if (pelver::is_plain(other)) owner = &other;
  }
  return owner;
}

std::string_view configuration_name(const PHMVER& record) noexcept {
  const bool is_second_generation = text_of(record.version).starts_with('2');
  if (is_second_generation && is_monitor(record)) return "delvon.cfg";
  if (is_second_generation && is_framework(record)) return "emb.cfg";
  return "pelloran.cfg";
}

// Finds out the configuration file and says so. False when its name is too long.
bool announce_configuration(const PHMVER& record, char* configuration) noexcept {
  if (name_configuration(configuration, record) == kNamedByEnvironment) {
    log("PELCFG environment variable setting: %s\n", configuration);
    return text_of(std::getenv("PELCFG")) == configuration;
  }
  log("Reading %s\n", configuration);
  return !is_missing(configuration);
}

void run_listing_tool(const PHMVER& record) noexcept {
  const PHMVER* owner = owner_of_tool(record);
  Path tool;
  const bool fits = owner == nullptr || compose_path(tool, {text_of(owner->dir), "/bin/showcfg"});
  if (p_sitfunctbl != nullptr) p_sitfunctbl->PrepareConfigName("PELCFG", &record);
  char configuration[SIT_PATH_BYTES] = "";
  if (!announce_configuration(record, configuration) || !fits) return;

  Command command{kCommandLength};
  if (!command.quoted(tool.view()).raw(" ").quoted(configuration).fits()) return;
  log_verbose("GetLicenseInfo: about to run  %s\n", command.c_str());
  command.run();
}

// Writes the file under its underlined path. Returns what reading it gave.
int write_file_section(const Path& path) noexcept {
  std::array<char, SIT_PATH_BYTES> underline{};
  std::fill_n(underline.begin(), path.size(), '=');
  log("\nContents of: %s\n=============%s\n\n", path.c_str(), underline.data());
  log_verbose("GetLicenseInfo: about to read  %s\n", path.c_str());
  return log_file(path.c_str());
}

bool keeps_installer_record(const PHMVER& record) noexcept {
  const std::string_view version = text_of(record.version);
  return !contains(version, "8.") && !contains(version, "9.0");
}

void write_installer_record(const PHMVER& record) noexcept {
  Path path;
  if (!compose_path(path, {text_of(record.dir), "/installd.ini"})) return;
  if (const int error = write_file_section(path); error != 0) {
    log("Could not open %s, errno = %d\n", path.c_str(), error);
  }
}

void write_addons(const PHMVER& record) noexcept {
  Path path;
  if (!pelver::is_plain(record) || !compose_path(path, {text_of(record.dir), "/addons"}) ||
      !exists(path.c_str())) {
    return;
  }
  if (const int error = write_file_section(path); error != 0) {
    log("Cound not open addons file %s, errno = %d\n", path.c_str(), error);
  }
}

}  // namespace

int write_configuration(const PHMVER& record) noexcept {
  write_title(record);
  if (!has_room_for(record, kConfigurationRoom)) {
    log_verbose("ERROR: GetLicenseInfo - path too long\n");
    return 1;
  }
  if (!directory_exists(record)) return 0;
  run_listing_tool(record);
  if (!keeps_installer_record(record)) return 0;
  log_verbose("\nTrying to find installd.ini\n\n");
  if (!has_room_for(record, kInstallerRecordRoom)) return 1;
  write_installer_record(record);
  write_addons(record);
  return 0;
}

int name_configuration(char* destination, const PHMVER& record) noexcept {
  if (const char* named = std::getenv("PELCFG"); named != nullptr) {
    constexpr std::size_t kNamedBytes = SIT_PATH_BYTES - 1;
    if (!store({destination, kNamedBytes}, named)) {
      log_text(TooLong{"The value of PELCFG", {named}, kNamedBytes - 1}.view());
    }
    return kNamedByEnvironment;
  }
  Path path;
  static_cast<void>(compose_path(path, {text_of(record.dir), "/", configuration_name(record)}));
  put_text(destination, path.view());
  return kDerived;
}

void list_installation(const PHMVER& record) noexcept {
  if (directory_exists(record)) list_directory("-lLR", text_of(record.dir), kCommandLength);
}

}  // namespace sit::prodlic
