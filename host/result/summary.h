// The page that the reader opens first.
#pragma once

#include <string>
#include <vector>

#include "result/collection.h"

namespace host {

[[nodiscard]] std::string summary_of(const Collection& collection,
                                     const std::vector<Problem>& problems);

// "Complete", "Not complete: 1 of 9 rows not ok".
[[nodiscard]] std::string verdict_of(const Collection& collection);

}  // namespace host
