// Library functions that fail on demand. The program defines them, and so the plug-in, whose calls
// go through the dynamic loader, calls these.
#pragma once

#include <string>
#include <vector>

namespace faults {

// Functions that fail together, by the name of the one that stands for them.
[[nodiscard]] const std::vector<std::string>& groups();

enum class Span { kOnce, kFromThereOn };

// Lets the n-th call of the group fail, in this process and not in its children. `at_first` is run
// when that happens.
void arm(const std::string& group, int n, Span span, void (*at_first)());

// Ends that. Returns how many calls were refused.
int disarm();

}  // namespace faults
