// What the host itself looks at, in a worker: a file system that does not answer must hang no more
// than that.
#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "work/answers.h"
#include "work/settings.h"

namespace host {

void look_around(const Answers& answers, const std::vector<SettingRule>& settings);

// The machine, as far as it was seen.
struct Glance {
  std::string user;  // who collects
  double uptime = -1;
  std::string load;
  unsigned cores = 0;
  std::uint64_t memory = 0;  // in bytes, as all of these
  std::uint64_t memory_available = 0;
  std::uint64_t swap = 0;
  std::uint64_t swap_free = 0;
  std::size_t processes = 0;
  std::vector<std::string> waiting;  // in state D: their names
  std::vector<std::string> zombies;
  bool clock_is_known = false;
  bool clock_is_synchronised = false;
  std::vector<std::string> full;                // file systems over 90 %, in words
  std::map<std::string, std::string> settings;  // their values, by their names

  void add(const nlohmann::json& seen);
};

}  // namespace host
