// The steps of a collection, as data.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "plugin.h"

namespace host {

// What to collect besides this machine and its installations.
struct Wishes {
  std::vector<std::pair<std::string, std::string>> netscape;   // server root, server name
  std::vector<std::string> apache;                             // server root
  std::vector<std::string> commands;                           // to capture
  std::vector<std::pair<std::string, std::string>> libraries;  // to capture: path, entry point
  std::vector<std::string> brokers;  // whose logs to copy, as OBCopyFiles names them; none: all
};

struct Step {
  std::string command;
  // Where the report goes, below the output folder.
  std::filesystem::path file;
  // Runs the command for the report at the path; returns the result code.
  std::function<int(const Plugin&, const std::filesystem::path&)> run;
};

// `version_keys` name the installations found.
[[nodiscard]] std::vector<Step> collection_steps(const std::vector<std::string>& version_keys,
                                                 const Wishes& wishes);

}  // namespace host
