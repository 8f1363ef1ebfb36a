// The steps of a collection, as data.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "plugin.h"

namespace host {

struct Step {
  std::string command;
  std::string file;
  // Writes the report at the path; returns the result code.
  std::function<int(const Plugin&, const char* path)> run;
};

[[nodiscard]] std::vector<Step> collection_steps();

}  // namespace host
