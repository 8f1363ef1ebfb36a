// A row of the collection: a step and what came of it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "report/report.h"
#include "steps/steps.h"

namespace host {

enum class RowOutcome { kWaiting, kOk, kPartial, kFailed, kTimedOut, kCrashed, kSkipped };

[[nodiscard]] const char* text_of(RowOutcome outcome);

struct Row {
  explicit Row(Step to_do) : step(std::move(to_do)) {}

  Step step;
  RowOutcome outcome = RowOutcome::kWaiting;
  std::optional<int> code;  // the plug-in's
  std::string why;
  double seconds = 0;
  std::uint64_t bytes = 0;

  // While it runs.
  std::unique_ptr<Report> report;
  Follower follower;
  std::string now;                           // what the worker is at
  std::optional<std::string> exit_of_first;  // how its first command ended
  std::string nothing;                       // why there is no report, and none is missed
  std::string lacks;                         // what an earlier row would have told
  std::string own_faults;                    // those that no section tells of
  bool is_short_of_space = false;
};

// A command that had to be ended, or was left over.
struct EndedCommand {
  std::string command_line;
  int pid = 0;
  double seconds = 0;
  std::string end;  // how
  std::string row;  // its id; empty when not known
};

// What came of looking for the installations.
void conclude_discovery(Row& row, const Found& found);

// What came of the row, from its report, its code and what the supervisor has noted. Where there
// was no room for its report, `no_space` says so.
void conclude(Row& row, const OutputFolder& folder, const std::string& no_space);

[[nodiscard]] bool is_fault(RowOutcome outcome);

}  // namespace host
