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
  if (Room(folder_.descriptor()).is_short()) {
    for (const auto& worker : workers_) {
      Row* row = worker->run.row();
      if (row != nullptr) note_short(*row, size_of(folder_, row->step.file));
    }
  }
  for (const auto& worker : workers_) look_at(*worker);
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
    for (Row& row : rows_) {
      if (row.step.id != command.row || row.report == nullptr) continue;
      // Its writer waits for the command, so this is where the report is at.
      row.report->note(
          size_of(folder_, row.step.file), SectionOutcome::kTimedOut,
          "\"" + command.command_line + "\" was ended after " + limit_text(command.seconds));
    }
  }
}

void Supervisor::look_at(Worker& worker) {
  Row* row = worker.run.row();
  if (row == nullptr) return;
  static_cast<void>(read_report(*row));
  const std::uint64_t written = bytes_written(worker.process.pid()).value_or(0);
  const bool is_active = written != worker.written || watch_.of_worker(worker.process.pid());
  worker.written = written;
  if (is_active) worker.last_activity = Clock::now();
  if (!worker.past_limit.empty() || seconds_since(worker.last_activity) < limits_.command) return;
  worker.past_limit = "nothing happened for " + limit_text(limits_.command);
  const std::string library = product_library_of(worker.process.pid());
  if (!library.empty()) worker.past_limit += " in " + library;
  ::kill(worker.process.pid(), SIGKILL);
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
  stop_workers();
  for (Run& run : runs_) {
    if (!run.is_running) skip_rest(run);
  }
}

void Supervisor::finish() {
  constexpr double kLongest = 6;  // asking and ending take two seconds, and some may not die
  watch_.end_all();
  const Clock::time_point start = Clock::now();
  for (;;) {
    reap();
    watch_commands();
    if ((watch_.is_idle() && workers_.empty()) || seconds_since(start) > kLongest) break;
    wait_for_events(false);
    take_signals();
  }
  watch_.give_up();
}

}  // namespace host
