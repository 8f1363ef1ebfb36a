// What a supervisor keeps of the subjects and of the workers at work.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "run/supervisor.h"
#include "run/worker_process.h"

namespace host {

// The rows of one subject, of which some are done.
struct Supervisor::Run {
  Subject subject;
  std::vector<Row*> rows;
  std::size_t next = 0;
  bool is_running = false;
  std::optional<Clock::time_point> refused = {};  // since when no worker could be started

  [[nodiscard]] bool is_done() const { return next == rows.size(); }
  [[nodiscard]] Row* row() const { return is_done() ? nullptr : rows[next]; }
};

struct Supervisor::Worker {
  WorkerProcess process;
  Run& run;
  Clock::time_point row_start = Clock::now();
  Clock::time_point last_activity = Clock::now();
  Clock::time_point last_growth = Clock::now();
  Clock::time_point last_open = Clock::now();  // of the pipe that its answers come by
  std::uint64_t size = 0;                      // of the report
  std::string crashed_in = {};                 // a product's library
  std::string failure = {};                    // why it can do nothing at all
  std::string past_limit = {};                 // why it was ended
  std::optional<Clock::time_point> stopped = {};
};

// "signal 6 (Aborted)".
[[nodiscard]] std::string signal_text(int signal);

}  // namespace host
