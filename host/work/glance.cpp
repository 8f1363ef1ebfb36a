#include "work/glance.h"

#include <pwd.h>
#include <sched.h>
#include <sys/statvfs.h>
#include <sys/timex.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <sstream>

#include "support/mounts.h"
#include "support/processes.h"

namespace host {
namespace {

using nlohmann::json;

std::string first_line(const std::string& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

json load() {
  cpu_set_t cores;
  CPU_ZERO(&cores);
  static_cast<void>(::sched_getaffinity(0, sizeof cores, &cores));
  std::istringstream loads(first_line("/proc/loadavg"));
  std::string one;
  std::string five;
  std::string fifteen;
  loads >> one >> five >> fifteen;
  std::istringstream uptime(first_line("/proc/uptime"));
  double seconds = -1;
  uptime >> seconds;
  return {{"load", one + " " + five + " " + fifteen},
          {"cores", CPU_COUNT(&cores)},
          {"uptime", seconds}};
}

json memory() {
  constexpr std::uint64_t kKibibyte = 1024;
  std::map<std::string, std::uint64_t> values;
  std::ifstream file("/proc/meminfo");
  for (std::string line; std::getline(file, line);) {
    std::istringstream fields(line);
    std::string name;
    std::uint64_t value = 0;
    fields >> name >> value;
    values[name] = value * kKibibyte;
  }
  return {{"memory", values["MemTotal:"]},
          {"memory_available", values["MemAvailable:"]},
          {"swap", values["SwapTotal:"]},
          {"swap_free", values["SwapFree:"]}};
}

json processes() {
  constexpr std::size_t kMostNames = 5;
  std::size_t count = 0;
  std::map<char, std::vector<std::string>> names;
  for (const Process& process : all_processes()) {
    ++count;
    if (process.state != 'D' && process.state != 'Z') continue;
    std::string name = first_line("/proc/" + std::to_string(process.pid) + "/comm");
    std::vector<std::string>& of_state = names[process.state];
    if (of_state.size() >= kMostNames) name.clear();
    of_state.push_back(name);
  }
  return {{"processes", count}, {"waiting", names['D']}, {"zombies", names['Z']}};
}

json clock() {
  timex state{};
  const int result = ::adjtimex(&state);
  return {{"clock_is_known", result >= 0},
          {"clock_is_synchronised", result >= 0 && result != TIME_ERROR}};
}

// Those that are always full, and those that hold nothing.
bool is_worth_a_look(const Mount& mount) {
  constexpr std::array<const char*, 6> kAlwaysFull{"squashfs", "iso9660", "udf",
                                                   "erofs",    "cramfs",  "autofs"};
  return std::find(kAlwaysFull.begin(), kAlwaysFull.end(), mount.type) == kAlwaysFull.end();
}

bool is_of_network(const Mount& mount) {
  return mount.type.starts_with("nfs") || mount.type.starts_with("cifs") ||
         mount.type.starts_with("smb") || mount.type.starts_with("fuse");
}

// Whoever keeps the names of users may be slow to answer, or not answer at all.
json user() {
  const passwd* entry = ::getpwuid(::geteuid());
  return {{"user", entry == nullptr ? "" : entry->pw_name}};
}

json fullness(const Mount& mount, std::set<unsigned long>& seen) {
  constexpr unsigned long kPercent = 100;
  constexpr unsigned long kNearlyFull = 90;
  json full = json::array();
  struct statvfs status {};
  if (::statvfs(mount.point.c_str(), &status) != 0 || status.f_blocks == 0) return full;
  // Several mounts may show one file system.
  const bool is_known = status.f_fsid != 0 && !seen.insert(status.f_fsid).second;
  if (is_known || (status.f_flag & ST_RDONLY) != 0) return full;
  const auto add = [&](unsigned long used, unsigned long free, const char* what) {
    if (used + free == 0) return;
    const unsigned long percent = (used * kPercent + used + free - 1) / (used + free);
    if (percent > kNearlyFull) full.push_back(mount.point + what + std::to_string(percent) + " %");
  };
  add(status.f_blocks - status.f_bfree, status.f_bavail, " ");
  add(status.f_files - status.f_ffree, status.f_favail, " inodes ");
  return full;
}

}  // namespace

void look_around(const Answers& answers, const std::vector<SettingRule>& settings) {
  for (const auto& seen : {load(), memory(), processes(), clock()}) answers.send('g', seen);
  for (const SettingRule& rule : settings) {
    answers.send('n', "waiting for the setting \"" + rule.name + "\"");
    const std::string value = value_of(rule);
    if (!value.empty()) answers.send('g', json{{"settings", {{rule.name, value}}}});
  }
  std::vector<Mount> all = mounts();
  std::stable_partition(all.begin(), all.end(), [](const Mount& m) { return !is_of_network(m); });
  std::set<unsigned long> file_systems;
  for (const Mount& mount : all) {
    if (!is_worth_a_look(mount)) continue;
    answers.send('n', "waiting for the file system " + mount.point);
    answers.send('g', json{{"full", fullness(mount, file_systems)}});
  }
  answers.send('n', std::string("waiting for the name of the user"));
  answers.send('g', user());
  answers.send('n', std::string());
}

void Glance::add(const json& seen) {
  const auto take = [&seen](const char* name, auto& value) {
    if (seen.contains(name)) seen.at(name).get_to(value);
  };
  take("user", user);
  take("uptime", uptime);
  take("load", load);
  take("cores", cores);
  take("memory", memory);
  take("memory_available", memory_available);
  take("swap", swap);
  take("swap_free", swap_free);
  take("processes", processes);
  take("waiting", waiting);
  take("zombies", zombies);
  take("clock_is_known", clock_is_known);
  take("clock_is_synchronised", clock_is_synchronised);
  std::vector<std::string> more;
  take("full", more);
  full.insert(full.end(), more.begin(), more.end());
  std::map<std::string, std::string> values;
  take("settings", values);
  settings.merge(values);
}

}  // namespace host
