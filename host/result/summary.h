// The page that the reader opens first.
#pragma once

#include <string>
#include <vector>

#include "result/collection.h"

namespace host {

// A name and what is to say of it.
struct Field {
  std::string name;
  std::string value;
};

// What the summary tells of the collection as such, and of the machine.
[[nodiscard]] std::vector<Field> head_of(const Collection& collection);
[[nodiscard]] std::vector<Field> machine_of(const Glance& glance);

[[nodiscard]] std::string summary_of(const Collection& collection,
                                     const std::vector<Problem>& problems);

// "Complete", "Not complete: 1 of 9 rows not ok".
[[nodiscard]] std::string verdict_of(const Collection& collection);

}  // namespace host
