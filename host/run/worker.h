// What a worker process does: it loads the plug-in and runs steps.
#pragma once

#include <filesystem>
#include <span>

#include "steps/steps.h"
#include "support/folder.h"
#include "work/settings.h"

namespace host {

// What all workers of a run have in common.
struct RunSettings {
  std::filesystem::path plugin;
  bool verbose = false;
  std::vector<SettingRule> noted = {};  // of the machine
};

struct WorkerOrder {
  const RunSettings& settings;
  const OutputFolder& folder;
  const Subject& subject;
  std::span<const Step> steps;
  int answers;  // where the results go
  int printed;  // where whatever a product prints goes
};

// Turns the process that has just been forked into a worker.
[[noreturn]] void be_worker(const WorkerOrder& order) noexcept;

}  // namespace host
