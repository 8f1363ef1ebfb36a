// What a supervisor sees to from time to time: limits, room, and how far the work has come.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdint>
#include <sstream>

#include "run/product_library.h"
#include "run/supervisor.h"
#include "run/supervisor_state.h"
#include "support/processes.h"

namespace host {
namespace {

// "3 s", "0.3 s": no more than it is.
std::string limit_text(double seconds) {
  constexpr double kTenths = 10;
  std::ostringstream text;
  text << std::floor(seconds * kTenths) / kTenths << " s";
  return text.str();
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
      if (row != nullptr) note_short(*row, folder_.size_of(row->step.file), Weight::kAlways);
    }
  }
  for (const auto& worker : workers_) look_at(*worker);
  abandon_the_undying();
  progress_.show(running());
}

void Supervisor::watch_commands() {
  std::map<pid_t, std::string> rows;
  std::map<std::string, std::uint64_t> sizes;  // before any command is told to end
  for (const auto& worker : workers_) {
    const Row* row = worker->run.row();
    rows[worker->process.pid()] = row == nullptr ? "" : row->step.id;
    if (row != nullptr) sizes[row->step.id] = folder_.size_of(row->step.file);
  }
  for (const EndedCommand& command : watch_.look(descendants(::getpid()), rows)) {
    progress_.ended(command);
    Row* row = command.end.empty() ? nullptr : find_row(command.row);
    if (row == nullptr || row->step.kind->report == nullptr) continue;
    // The plug-in waits for the command, so this is where the report is at.
    report_of(*row).note(
        sizes[command.row], SectionOutcome::kTimedOut,
        "\"" + command.command_line + "\" took more than " + limit_text(command.seconds),
        Weight::kUnlessReplaced);
  }
}

Row* Supervisor::find_row(const std::string& id) {
  const auto found =
      std::find_if(rows_.begin(), rows_.end(), [&id](const Row& row) { return row.step.id == id; });
  return found == rows_.end() ? nullptr : &*found;
}

void Supervisor::look_at(Worker& worker) {
  Row* row = worker.run.row();
  if (row == nullptr || worker.stopped) return;
  // What the worker tells of from here on lies behind this place, which is read no further.
  const std::uint64_t size = folder_.size_of(row->step.file);
  take_answers(worker);
  if (worker.run.row() != row) return;
  static_cast<void>(read_report(*row, size));
  const Clock::time_point now = Clock::now();
  if (size != worker.size) worker.last_activity = worker.last_growth = now;
  if (watch_.of_worker(worker.process.pid())) worker.last_activity = now;
  worker.size = size;
  // Some sections try a list of commands before they write anything; no list is that long.
  constexpr double kLongestList = 12;
  const bool is_still = seconds_since(worker.last_activity) > limits_.command;
  const bool is_busy = seconds_since(worker.last_growth) > kLongestList * limits_.command;
  // A process that ends closes the pipe a moment before; without an end, a product has closed it.
  constexpr double kEnding = 1;
  if (worker.process.answers() >= 0) worker.last_open = now;
  const bool is_silent = seconds_since(worker.last_open) > kEnding;
  if (!is_still && !is_busy && !is_silent) return;
  take_answers(worker);
  if (worker.run.row() != row) return;  // it was just about to be done
  worker.past_limit = is_still ? "nothing happened for " + limit_text(limits_.command)
                      : is_silent
                          ? "its worker has been cut off"
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
  given_up_at_ = Clock::now();
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
    is_reading_ = !read_finished_reports();
    const bool is_all_done = watch_.is_idle() && workers_.empty() && reading_.empty();
    if (is_all_done || seconds_since(start) > kLongest) break;
    wait_for_events(is_reading_);
    take_signals();
  }
  if (!given_up_.empty()) {
    for (Run& run : runs_) skip_rest(run);
  }
  watch_.give_up();
}

}  // namespace host
