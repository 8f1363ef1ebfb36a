// A worker as its supervisor has it: a process and two pipes from it.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "run/worker.h"
#include "support/descriptor.h"

namespace host {

class WorkerProcess {
 public:
  // Starts one. Throws Failure when there is no process or descriptor left for it.
  WorkerProcess(const RunSettings& settings, const OutputFolder& folder, const Subject& subject,
                const std::vector<Step>& steps);

  [[nodiscard]] pid_t pid() const { return pid_; }
  [[nodiscard]] int answers() const { return answers_.get(); }
  [[nodiscard]] int printed() const { return printed_.get(); }

  // The lines that have come since the last call.
  [[nodiscard]] std::vector<std::string> take_lines();

  // Keeps no more than the end of what a product has printed.
  void take_printed();
  void forget_printed();
  [[nodiscard]] std::string last_printed_line() const;

 private:
  pid_t pid_ = 0;
  Descriptor answers_;
  Descriptor printed_;
  std::string line_;
  std::string tail_;
};

}  // namespace host
