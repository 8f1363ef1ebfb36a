// Copying the log files that a validation has found, in a worker.
#pragma once

#include <string>
#include <vector>

#include "plugin.h"
#include "steps/steps.h"

namespace host {

// A folder of its own for the logs of one broker, one database or the admin server.
struct LogFolder {
  std::string log;     // the name as OBCopyFiles has it
  std::string folder;  // below the output folder
};

// Those of the step's names, or of everything that the validation has found and the admin server.
[[nodiscard]] std::vector<LogFolder> log_folders(const Plugin& plugin, const Step& step);

// Two logs of one broker may have one name; the one that was copied first is then copied again.
void copy_overwritten_logs(const Plugin& plugin, const Step& step, const LogFolder& folder);

}  // namespace host
