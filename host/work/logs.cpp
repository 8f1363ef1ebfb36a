#include "work/logs.h"

#include <strings.h>

#include <algorithm>
#include <filesystem>

#include "sit/obvalid.h"
#include "sit/pelver.h"
#include "support/names.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr const char* kAdminServer = "admsrv";
constexpr const char* kDatabase = "db:";

bool same(const std::string& left, const std::string& right) {
  return ::strcasecmp(left.c_str(), right.c_str()) == 0;
}

std::vector<std::string> known_logs(const Plugin& plugin, const std::string& version) {
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

}  // namespace

std::vector<LogFolder> log_folders(const Plugin& plugin, const Step& step) {
  std::vector<LogFolder> folders;
  Names brokers;
  for (const std::string& log :
       step.names.empty() ? known_logs(plugin, step.version) : step.names) {
    // A database gets a folder of its own from the plug-in.
    const std::string below = same(log, kAdminServer)             ? "adminserver"
                              : same(log.substr(0, 3), kDatabase) ? "databases"
                                                                  : "brokers/" + brokers.take(log);
    folders.push_back({log, (fs::path(step.file).parent_path() / below).string()});
  }
  return folders;
}

void copy_overwritten_logs(const Plugin& plugin, const Step& step, const LogFolder& folder) {
  std::vector<fs::path> copied;
  for (const LogEntry* entry = &plugin.variable<LogEntry>("logs"); entry->name != nullptr;
       ++entry) {
    const bool is_copied = entry->version != nullptr && entry->logFile != nullptr &&
                           same(entry->version, step.version) && same(entry->name, folder.log) &&
                           entry->type != LT_DATABASE;
    if (is_copied) copied.emplace_back(entry->logFile);
  }
  auto* copy = plugin.function<decltype(::Copy_File)>("Copy_File");
  for (std::size_t i = 0; i < copied.size(); ++i) {
    const bool is_overwritten = std::any_of(
        copied.begin() + static_cast<std::ptrdiff_t>(i), copied.end(), [&](const fs::path& later) {
          return later != copied[i] && later.filename() == copied[i].filename();
        });
    const std::string target =
        folder.folder + "/" + copied[i].filename().string() + "." + std::to_string(i + 1);
    if (is_overwritten) static_cast<void>(copy(copied[i].c_str(), target.c_str(), 1));
  }
}

}  // namespace host
