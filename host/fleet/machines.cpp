#include "fleet/machines.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>

#include "bundle/bundle.h"
#include "page/page.h"
#include "result/collection.h"
#include "support/failure.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using nlohmann::json;

constexpr std::size_t kMostFindings = 200;  // of a machine
constexpr std::size_t kMostFacts = 60;      // the same
constexpr std::size_t kLongest = 300;       // bytes of a text

std::string text(const json& object, const char* field) {
  const auto found = object.find(field);
  return found != object.end() && found->is_string() ? found->get<std::string>().substr(0, kLongest)
                                                     : "";
}

bool is_archive(const fs::path& path) {
  const std::string name = path.filename().string();
  return name.ends_with(".tar.xz") || name.ends_with(".tar.gz") || name.ends_with(".tar.zst");
}

// Archives and folders of collections below this folder, which are not looked into any deeper.
std::vector<fs::path> bundles_in(const fs::path& folder) {
  constexpr int kDeepest = 2;
  std::vector<fs::path> bundles;
  std::error_code error;
  fs::recursive_directory_iterator entry(folder, error);
  if (error) throw Failure(folder.string() + ": " + error.message());
  for (const fs::recursive_directory_iterator end; entry != end; entry.increment(error)) {
    if (entry->is_symlink(error)) continue;
    const bool is_folder = entry->is_directory(error);
    const bool is_bundle = is_folder ? fs::exists(entry->path() / kManifestFile, error)
                                     : entry->is_regular_file(error) && is_archive(entry->path());
    if (is_bundle) bundles.push_back(entry->path());
    if (is_folder && (is_bundle || entry.depth() >= kDeepest)) entry.disable_recursion_pending();
  }
  std::sort(bundles.begin(), bundles.end());
  return bundles;
}

// A field of this kind; an empty one of it where there is none.
json part(const json& object, const char* field, json::value_t kind) {
  const auto found = object.find(field);
  return found != object.end() && found->type() == kind ? *found : json(kind);
}

void take_settings(const json& settings, Machine& machine) {
  for (const auto& [name, value] : settings.items()) {
    if (machine.facts.size() >= kMostFacts) return;
    machine.facts.try_emplace(name.substr(0, kLongest), text(settings, name.c_str()));
  }
}

void take_row(const json& row, Machine& machine) {
  const std::string id = text(row, "id");
  const std::string outcome = text(row, "outcome");
  if (id == "discovery") machine.facts["products"] = text(row, "why");
  if (outcome != "ok" && outcome != "skipped") machine.facts["not ok"] += id + " ";
}

void take_manifest(const json& manifest, Machine& machine) {
  const std::string label = text(manifest, "label");
  machine.name = label.empty() ? text(manifest, "host") : label;
  machine.started = text(manifest, "started");
  const bool is_complete = part(manifest, "complete", json::value_t::boolean);
  machine.state = is_complete ? MachineState::kComplete : MachineState::kPartial;
  machine.why = text(manifest, "given_up");
  machine.facts["sit"] = text(manifest, "tool");
  machine.facts["plug-in"] = text(manifest, "plugin");
  for (const json& problem : part(manifest, "problems", json::value_t::array)) {
    if (machine.findings.size() < kMostFindings) machine.findings.push_back(text(problem, "text"));
  }
  for (const json& row : part(manifest, "rows", json::value_t::array)) take_row(row, machine);
  take_settings(part(manifest, "settings", json::value_t::object), machine);
}

Machine read_machine(const fs::path& bundle, const fs::path& folder) {
  Machine machine{.bundle = bundle.lexically_relative(folder).string()};
  try {
    const json manifest =
        json::parse(Bundle(bundle).text_of(kManifestFile), nullptr, /*exceptions=*/false);
    if (!manifest.is_object()) throw Failure("its manifest cannot be read");
    take_manifest(manifest, machine);
  } catch (const std::exception& error) {
    machine.state = MachineState::kUnreadable;
    machine.why = std::string(error.what()).substr(0, kLongest);
  }
  if (machine.name.empty()) machine.name = bundle.filename().string();
  std::error_code error;
  const bool has_page = fs::exists(bundle / kPageFile, error);  // not so in an archive
  machine.page = machine.bundle + (has_page ? std::string("/") + kPageFile : "");
  return machine;
}

// Those that were asked and have no collection here.
void add_missing(const fs::path& folder, std::map<std::string, Machine>& machines) {
  std::ifstream file(folder / "fleet-status.json", std::ios::binary);
  const json states = json::parse(file, nullptr, /*exceptions=*/false);
  for (const json& state : states.is_array() ? states : json::array()) {
    const std::string name = text(state, "host");
    const std::string word = text(state, "state");
    if (name.empty() || word == "collected" || machines.contains(name)) continue;
    machines[name] = {
        .name = name,
        .state = word == "unreachable" ? MachineState::kUnreachable : MachineState::kFailed,
        .why = text(state, "why")};
  }
}

}  // namespace

const char* text_of(MachineState state) {
  constexpr const char* kTexts[] = {"complete", "partial", "unreadable", "failed", "unreachable"};
  return kTexts[static_cast<std::size_t>(state)];
}

Fleet find_machines(const fs::path& folder) {
  Fleet fleet;
  std::map<std::string, Machine> machines;
  for (const fs::path& bundle : bundles_in(folder)) {
    Machine machine = read_machine(bundle, folder);
    Machine& known = machines[machine.name];
    if (known.started < machine.started || known.name.empty()) std::swap(known, machine);
    if (!machine.name.empty()) fleet.passed.push_back(machine.bundle);
  }
  add_missing(folder, machines);
  for (auto& [name, machine] : machines) fleet.machines.push_back(std::move(machine));
  return fleet;
}

}  // namespace host
