// Installations, and how one of them is found again in another process.
#pragma once

#include <map>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

namespace host {

// Variables for a worker; those without a value are to be unset.
using Environment = std::map<std::string, std::optional<std::string>>;

struct Installation {
  std::string key;      // as the plug-in's commands want it
  std::string version;  // whole, with its patch part
  std::string directory;
  int major = 0;
  bool is_monitor = false;
  Environment environment = {};  // in which it is found
};

// What a discovery hands over.
struct Found {
  std::vector<Installation> installations;
  std::vector<std::string> missing;  // what was named and is not there, in words
};

void to_json(nlohmann::json& json, const Found& found);
void from_json(const nlohmann::json& json, Found& found);

}  // namespace host
