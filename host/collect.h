// "sit collect": everything about this machine into one file.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "result/contents.h"
#include "run/signal_watch.h"
#include "run/supervisor.h"
#include "steps/selection.h"
#include "steps/steps.h"

namespace host {

struct CollectOptions {
  std::filesystem::path output = ".";
  std::vector<std::string> installations;  // directories
  std::string monitoring;                  // init file
  std::string label;
  std::string progress = "auto";
  std::string format = "xz";  // of the archive
  bool is_unmasked = false;
  std::vector<std::string> mask_rules;  // more files of them
  std::vector<std::string> findings;    // the same
  bool has_extras = true;
  std::vector<std::string> capture_files;  // the same
  Caps caps = {};
  RunSettings settings = {};
  Limits limits = {};
  Selection selection = {};
  Wishes wishes = {};
  bool lists_steps = false;
  std::vector<std::string> as_given;  // the options, for the summary
};

enum ExitStatus : int { kComplete = 0, kPartial = 1, kWrongUsage = 2, kNothingMade = 3 };

// Returns the exit status. Throws Failure when nothing could be made.
int collect(const CollectOptions& options);

}  // namespace host
