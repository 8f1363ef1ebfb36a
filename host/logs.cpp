#include "logs.h"

#include <strings.h>

#include <algorithm>
#include <cstring>
#include <system_error>

#include "sit/obvalid.h"
#include "sit/pelver.h"
#include "sit/sitexec.h"

namespace host {
namespace {

constexpr const char* kAdminServer = "admsrv";
constexpr const char* kDatabase = "db:";

bool same(const std::string& left, const std::string& right) {
  return ::strcasecmp(left.c_str(), right.c_str()) == 0;
}

// The whole version of the plain installation that the key names.
std::string version_of(const Plugin& plugin, const std::string& key) {
  auto* strip_patch = plugin.function<decltype(::RmPatchInfoPHM)>("RmPatchInfoPHM");
  auto* is_product = plugin.function<decltype(::IsCorrectProduct)>("IsCorrectProduct");
  for (const PHMVER* record = plugin.variable<PHMVER*>("pphm"); record != nullptr;
       record = record->next) {
    if (record->version == nullptr || is_product(record, SEL_PRODUCT) == 0) continue;
    std::string release = record->version;
    strip_patch(release.data());
    release.resize(std::strlen(release.c_str()));
    if (key == release) return record->version;
  }
  return key;
}

std::vector<std::string> known_names(const Plugin& plugin, const std::string& version) {
  std::vector<std::string> names;
  for (const LogEntry* entry = &plugin.variable<LogEntry>("logs"); entry->name != nullptr;
       ++entry) {
    const std::string name =
        (entry->type == LT_DATABASE ? kDatabase : "") + std::string(entry->name);
    const auto is_name = [&name](const std::string& other) { return same(name, other); };
    if (entry->version == nullptr || !same(entry->version, version)) continue;
    if (std::none_of(names.begin(), names.end(), is_name)) names.push_back(name);
  }
  if (plugin.function<decltype(::FindAdminServer)>("FindAdminServer")(version.c_str()) != 0) {
    names.emplace_back(kAdminServer);
  }
  return names;
}

// A folder for each broker, whose logs may have the names of another's. A database gets its own
// from the plug-in.
std::filesystem::path folder_for(std::string name) {
  if (same(name, kAdminServer)) return "adminserver";
  if (same(name.substr(0, 3), kDatabase)) return "databases";
  std::replace(name.begin(), name.end(), '/', '_');
  return std::filesystem::path("brokers") / (name.empty() ? "unnamed" : name);
}

}  // namespace

int copy_logs(const Plugin& plugin, const std::string& version_key, std::vector<std::string> names,
              const std::filesystem::path& report) {
  const std::string version = version_of(plugin, version_key);
  const bool copies_all = names.empty();
  if (copies_all) names = known_names(plugin, version);
  auto* copy = plugin.function<decltype(::OBCopyFiles)>("OBCopyFiles");
  int result = SIT_OK;
  for (const std::string& name : names) {
    const std::filesystem::path folder = report.parent_path() / folder_for(name);
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    int code =
        error ? error.value() : copy(report.c_str(), name.c_str(), version.c_str(), folder.c_str());
    // The database of the same name that is left out here has its own turn.
    if (copies_all && code == SIT_DATABASE_LEFT_OUT) code = SIT_OK;
    if (result == SIT_OK) result = code;
    std::filesystem::remove(folder, error);  // fails, and shall, when it holds copies
  }
  return result;
}

}  // namespace host
