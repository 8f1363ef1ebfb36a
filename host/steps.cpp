#include "steps.h"

#include <algorithm>
#include <cstdint>

#include "logs.h"
#include "sit/codes.h"
#include "sit/pelver.h"
#include "sit/sitexec.h"
#include "sit/websvr.h"

namespace host {
namespace {

using Path = std::filesystem::path;
using Run = std::function<int(const Plugin&, const Path&)>;

bool is_monitor_key(const std::string& key) { return key.find(':') != std::string::npos; }

std::string folder_of(std::string key) {
  std::replace(key.begin(), key.end(), '/', '_');
  if (const std::size_t colon = key.find(':'); colon != std::string::npos) {
    key.replace(colon, 1, "-of-");
  }
  return key;
}

// A command about the machine: the report, then whatever `arguments` hold.
template <typename Signature, typename... Arguments>
Step machine_step(const std::string& command, const Path& file, Arguments... arguments) {
  return {command, file, [=](const Plugin& plugin, const Path& report) {
            return plugin.function<Signature>(command)(report.c_str(), arguments...);
          }};
}

// A command about one installation. All of them take the report, the key, the mode, the final flag
// or an int that is ignored, and the selector.
Step installation_step(const std::string& command, const std::string& file,
                       const std::string& key) {
  const int selector = is_monitor_key(key) ? SEL_MONITOR : SEL_PRODUCT_AND_WEBCLIENT;
  return {command, Path(folder_of(key)) / file, [=](const Plugin& plugin, const Path& report) {
            return plugin.function<decltype(::GetPelCFGInfo)>(command)(
                report.c_str(), key.c_str(), SIT_CREATE, SIT_FINAL, selector);
          }};
}

Step monitor_files_step(const std::string& key) {
  return {"GetDelvonFiles", Path(folder_of(key)) / "delvon.txt",
          [key](const Plugin& plugin, const Path& report) {
            std::string directory = report.parent_path().string();
            directory.resize(std::max<std::size_t>(directory.size() + 1, SIT_PATH_BYTES));
            return plugin.function<decltype(::GetDelvonFiles)>("GetDelvonFiles")(
                report.c_str(), directory.data(), key.c_str());
          }};
}

Step validation_step(const std::string& key) {
  return {"GetOBValidationInfo", Path(folder_of(key)) / "validation.txt",
          [key](const Plugin& plugin, const Path& report) {
            return plugin.function<decltype(::GetOBValidationInfo)>("GetOBValidationInfo")(
                report.parent_path().c_str(), report.c_str(), key.c_str(), SIT_CREATE, 0, "", "");
          }};
}

// The logs are those that the validation has found.
Step logs_step(const std::string& key, const std::vector<std::string>& names) {
  return {"OBCopyFiles", Path(folder_of(key)) / "logs" / "messages.txt",
          [=](const Plugin& plugin, const Path& report) {
            return copy_logs(plugin, key, names, report);
          }};
}

Step netscape_step(const std::string& root, const std::string& name, std::size_t number) {
  return {"GetNetscapeInfo", "netscape-" + std::to_string(number) + ".txt",
          [=](const Plugin& plugin, const Path& report) {
            return plugin.function<decltype(::GetNetscapeInfo)>("GetNetscapeInfo")(
                report.c_str(), root.c_str(), name.c_str());
          }};
}

Step apache_step(const std::string& root, std::size_t number) {
  return {"GetApacheInfo", "apache-" + std::to_string(number) + ".txt",
          [root](const Plugin& plugin, const Path& report) {
            return plugin.function<decltype(::GetApacheInfo)>("GetApacheInfo")(report.c_str(),
                                                                               root.c_str());
          }};
}

// The report of a capture is its index, beside what was captured.
Step capture_step(const std::string& command, const std::string& entry, std::size_t number) {
  const bool is_library = !entry.empty();
  const std::string output = is_library ? "" : "command-" + std::to_string(number) + ".txt";
  return {"RunCommand", "capture/index.txt", [=](const Plugin& plugin, const Path& index) {
            const Path folder = index.parent_path();
            return plugin.function<decltype(::RunCommand)>("RunCommand")(
                command.c_str(), entry.c_str(), is_library ? 1 : 0, folder.parent_path().c_str(),
                folder.filename().c_str(), output.c_str(), index.c_str());
          }};
}

}  // namespace

std::vector<Step> collection_steps(const std::vector<std::string>& version_keys,
                                   const Wishes& wishes) {
  std::vector<Step> steps{machine_step<decltype(::GetVersInfo)>("GetVersInfo", "versions.txt",
                                                                SIT_CREATE, SIT_FINAL, 1),
                          machine_step<decltype(::GetSysInfo)>(
                              "GetSysInfo", "system.txt", std::int16_t{0}, SIT_CREATE, SIT_FINAL),
                          machine_step<decltype(::GetEnvironInfo)>(
                              "GetEnvironInfo", "environment.txt", SIT_CREATE, SIT_FINAL)};
  for (const std::string& key : version_keys) {
    steps.push_back(installation_step("GetPelCFGInfo", "configuration.txt", key));
    steps.push_back(installation_step("GetPelInstFiles", "files.txt", key));
    steps.push_back(installation_step("GetPelSecurityLog", "security.txt", key));
    if (is_monitor_key(key)) {
      steps.push_back(monitor_files_step(key));
    } else {
      steps.push_back(validation_step(key));
      steps.push_back(logs_step(key, wishes.brokers));
    }
  }
  std::size_t number = 0;
  for (const auto& [root, name] : wishes.netscape) {
    steps.push_back(netscape_step(root, name, ++number));
  }
  number = 0;
  for (const std::string& root : wishes.apache) steps.push_back(apache_step(root, ++number));
  number = 0;
  for (const std::string& command : wishes.commands) {
    steps.push_back(capture_step(command, "", ++number));
  }
  for (const auto& [library, entry] : wishes.libraries) {
    steps.push_back(capture_step(library, entry, ++number));
  }
  return steps;
}

}  // namespace host
