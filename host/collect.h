// "sit collect": everything about this machine into one folder.
#pragma once

#include <filesystem>

#include "plugin.h"
#include "steps.h"

namespace host {

struct CollectOptions {
  std::filesystem::path output = ".";
  bool verbose = false;
  Wishes wishes = {};
};

// Returns the exit status: 0 when all went well, 1 when a step failed.
int collect(const Plugin& plugin, const CollectOptions& options);

}  // namespace host
