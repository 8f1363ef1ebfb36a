#include "fleet/shared.h"

#include <algorithm>
#include <set>

namespace host {

std::vector<SharedFinding> shared_findings(const std::vector<Machine>& machines,
                                           const NoiseRules& rules) {
  const Noise noise = rules.of("fleet", "");
  std::map<std::string, SharedFinding> alike;
  for (const Machine& machine : machines) {
    std::set<std::string> told;  // a machine counts once
    for (const std::string& finding : machine.findings) {
      std::string reduced = finding;
      if (!noise.reduce(reduced) || !told.insert(reduced).second) continue;
      SharedFinding& shared = alike[reduced];
      if (shared.text.empty()) shared.text = finding;
      shared.machines.push_back(machine.name);
    }
  }
  std::vector<SharedFinding> all;
  all.reserve(alike.size());
  for (auto& [reduced, shared] : alike) all.push_back(std::move(shared));
  std::ranges::stable_sort(all, [](const SharedFinding& a, const SharedFinding& b) {
    return a.machines.size() > b.machines.size();
  });
  return all;
}

std::vector<Difference> differences(const std::vector<Machine>& machines) {
  std::map<std::string, std::map<std::string, std::vector<std::string>>> facts;
  for (const Machine& machine : machines) {
    for (const auto& [fact, value] : machine.facts) facts[fact][value].push_back(machine.name);
  }
  for (auto& [fact, values] : facts) {
    for (const Machine& machine : machines) {
      if (!machine.facts.empty() && !machine.facts.contains(fact)) {
        values[""].push_back(machine.name);
      }
    }
  }
  std::vector<Difference> all;
  for (const auto& [fact, values] : facts) {
    if (values.size() < 2) continue;
    Difference difference{fact, {values.begin(), values.end()}};
    std::ranges::stable_sort(difference.values, [](const auto& a, const auto& b) {
      return a.second.size() < b.second.size();
    });
    all.push_back(std::move(difference));
  }
  return all;
}

}  // namespace host
