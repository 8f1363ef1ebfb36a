// What the machines of a fleet have in common, and where they differ.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "diff/noise.h"
#include "fleet/machines.h"

namespace host {

// A finding, and the machines that have it or one like it.
struct SharedFinding {
  std::string text;  // of the first
  std::vector<std::string> machines;
};

// The most shared ones first.
[[nodiscard]] std::vector<SharedFinding> shared_findings(const std::vector<Machine>& machines,
                                                         const NoiseRules& rules);

// The values of a fact on which machines differ, and who has each, the rarest first. Of a machine
// that is known and has no such fact the value is empty.
struct Difference {
  std::string fact;
  std::vector<std::pair<std::string, std::vector<std::string>>> values;
};
[[nodiscard]] std::vector<Difference> differences(const std::vector<Machine>& machines);

}  // namespace host
