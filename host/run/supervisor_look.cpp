// What a supervisor sees to from time to time: limits, room, and how far the work has come.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <sstream>

#include "run/product_library.h"
#include "run/supervisor.h"
#include "run/supervisor_state.h"
#include "support/processes.h"

namespace host {
namespace {

// "3 s", "0.3 s".
std::string limit_text(double seconds) {
  std::ostringstream text;
  text.precision(2);
  text << seconds << " s";
  return text.str();
}

std::uint64_t size_of(const OutputFolder& folder, const std::string& file) {
  struct stat status {};
  const bool is_there =
      ::fstatat(folder.descriptor(), file.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
  return is_there ? static_cast<std::uint64_t>(status.st_size) : 0;
}

}  // namespace

void Supervisor::look() {
  last_look_ = Clock::now();
  if (limits_.run > 0 && seconds_since(start_) > limits_.run) {
    give_up("the run's time limit of " + limit_text(limits_.run), RowOutcome::kTimedOut);
  }
  watch_commands();
  if (Room(folder_.descriptor()).is_short_for(0)) {
    for (const auto& worker : workers_) {
      Row* row = worker->run.row();
      if (row != nullptr) note_short(*row, size_of(folder_, row->step.file), Weight::kAlways);
    }
  }
  for (const auto& worker : workers_) look_at(*worker);
  abandon_the_undying();
  progress_.show(running());
}

void Supervisor::watch_commands() {
  std::map<pid_t, std::string> rows;
  for (const auto& worker : workers_) {
    const Row* row = worker->run.row();
    rows[worker->process.pid()] = row == nullptr ? "" : row->step.id;
  }
  for (const EndedCommand& command : watch_.look(descendants(::getpid()), rows)) {
    progress_.ended(command);
    if (command.end.empty()) continue;
    for (Row& row : rows_) {
      if (row.step.id != command.row || row.report == nullptr) continue;
      // Its writer waits for the command, so this is where the report is at.
      row.report->note(
          size_of(folder_, row.step.file), SectionOutcome::kTimedOut,
          "\"" + command.command_line + "\" took more than " + limit_text(command.seconds),
          Weight::kUnlessReplaced);
    }
  }
}

void Supervisor::look_at(Worker& worker) {
  Row* row = worker.run.row();
  if (row == nullptr || worker.stopped) return;
  static_cast<void>(read_report(*row));
  const std::uint64_t size = size_of(folder_, row->step.file);
  const Clock::time_point now = Clock::now();
  if (size != worker.size) worker.last_activity = worker.last_growth = now;
  if (watch_.of_worker(worker.process.pid())) worker.last_activity = now;
  worker.size = size;
  // Some sections try a list of commands before they write anything; no list is that long.
  constexpr double kLongestList = 12;
  const bool is_still = seconds_since(worker.last_activity) > limits_.command;
  const bool is_busy = seconds_since(worker.last_growth) > kLongestList * limits_.command;
  if (!is_still && !is_busy) return;
  worker.past_limit = is_still
                          ? "nothing happened for " + limit_text(limits_.command)
                          : "nothing was written for " + limit_text(kLongestList * limits_.command);
  const std::string library = product_library_of(worker.process.pid());
  if (!library.empty()) worker.past_limit += " in " + library;
  stop(worker);
}

// A process that waits for a dead disk does not even die.
void Supervisor::abandon_the_undying() {
  constexpr double kPatience = 3;
  for (auto at = workers_.begin(); at != workers_.end();) {
    Worker& worker = **at;
    if (!worker.stopped || seconds_since(*worker.stopped) < kPatience) {
      ++at;
      continue;
    }
    worker.past_limit += worker.past_limit.empty() ? "" : ", and its process does not end";
    bury(worker, "");
    at = workers_.erase(at);
  }
}

std::vector<Progress::Running> Supervisor::running() const {
  constexpr double kWorthNaming = 5;
  std::vector<Progress::Running> all;
  for (const auto& worker : workers_) {
    const Row* row = worker->run.row();
    if (row == nullptr) continue;
    Progress::Running running{.id = row->step.id,
                              .title = row->step.title,
                              .section = row->report ? row->report->current_title() : row->now,
                              .seconds = seconds_since(worker->row_start),
                              .command = {}};
    const auto command = watch_.of_worker(worker->process.pid());
    if (command && command->seconds > kWorthNaming) {
      running.command = command->command_line;
      running.command_seconds = command->seconds;
      running.command_limit = command->limit;
    }
    all.push_back(running);
  }
  return all;
}

void Supervisor::give_up(const std::string& why, RowOutcome outcome) {
  if (!given_up_.empty()) return;
  given_up_ = why;
  given_up_as_ = outcome;
  progress_.say(why);
  for (const auto& worker : workers_) stop(*worker);
  for (Run& run : runs_) {
    if (!run.is_running) skip_rest(run);
  }
}

void Supervisor::finish() {
  constexpr double kLongest = 6;  // asking and ending take two seconds, and some may not die
  for (const auto& worker : workers_) stop(*worker);
  watch_.end_all();
  const Clock::time_point start = Clock::now();
  for (;;) {
    reap();
    abandon_the_undying();
    watch_commands();
    if ((watch_.is_idle() && workers_.empty()) || seconds_since(start) > kLongest) break;
    wait_for_events(false);
    take_signals();
  }
  watch_.give_up();
}

}  // namespace host
