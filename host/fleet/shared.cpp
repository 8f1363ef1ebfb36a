#include "fleet/shared.h"

#include <algorithm>
#include <functional>
#include <set>

namespace host {
namespace {

// The facts that most machines have: what a few make up is no burden for all.
std::set<std::string> common_facts(const std::vector<Machine>& machines) {
  constexpr std::size_t kMostFacts = 100;
  std::map<std::string, std::size_t> counts;
  for (const Machine& machine : machines) {
    for (const auto& [fact, value] : machine.facts) ++counts[fact];
  }
  std::vector<std::pair<std::string, std::size_t>> common(counts.begin(), counts.end());
  std::ranges::stable_sort(common, std::greater(), [](const auto& fact) { return fact.second; });
  if (common.size() > kMostFacts) common.resize(kMostFacts);
  std::set<std::string> names;
  for (const auto& [fact, count] : common) names.insert(fact);
  return names;
}

}  // namespace

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
  std::vector<Difference> all;
  for (const std::string& fact : common_facts(machines)) {
    std::map<std::string, std::vector<std::string>> values;
    for (const Machine& machine : machines) {
      if (machine.facts.empty()) continue;
      const auto found = machine.facts.find(fact);
      values[found == machine.facts.end() ? "" : found->second].push_back(machine.name);
    }
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
