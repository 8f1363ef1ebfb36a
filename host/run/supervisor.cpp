#include "run/supervisor.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>

#include "run/product_library.h"
#include "run/supervisor_state.h"
#include "support/failure.h"
#include "support/processes.h"

namespace host {
namespace {

constexpr auto kBetweenLooks = std::chrono::milliseconds(50);

}  // namespace

std::string signal_text(int signal) {
  const char* name = ::sigdescr_np(signal);
  return "signal " + std::to_string(signal) +
         (name == nullptr ? "" : " (" + std::string(name) + ")");
}

Supervisor::Supervisor(const RunSettings& settings, const SignalWatch& signals,
                       const OutputFolder& folder, const Limits& limits,
                       const FindingRules& findings, Progress& progress)
    : settings_(settings),
      signals_(signals),
      folder_(folder),
      limits_(limits),
      findings_(findings),
      progress_(progress),
      watch_(limits.command) {
  // Whatever a command leaves behind comes to this process.
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  note_own_libraries(settings.plugin);
}

Supervisor::~Supervisor() = default;

void Supervisor::add(const Subject& subject) {
  Run& run = runs_.emplace_back(Run{.subject = subject, .rows = {}});
  for (const Step& step : subject.steps) {
    Row& row = rows_.emplace_back(step);
    if (step.limit > 0) watch_.limit_row(step.id, step.limit);
    if (step.left_out.empty()) {
      run.rows.push_back(&row);
    } else {
      row.outcome = RowOutcome::kSkipped;
      row.why = step.left_out;
    }
  }
  progress_.add_rows(run.rows.size());
  if (!given_up_.empty()) skip_rest(run);
}

void Supervisor::run(const std::vector<std::string>& awaited) {
  const auto is_awaited = [&awaited](const Run& run) {
    if (run.is_done()) return false;
    const std::string& id = run.rows.front()->step.id;
    return awaited.empty() || std::find(awaited.begin(), awaited.end(), id) != awaited.end();
  };
  const auto is_reading = [&] { return awaited.empty() && !reading_.empty(); };
  while (std::any_of(runs_.begin(), runs_.end(), is_awaited) || is_reading()) {
    if (given_up_.empty()) start_workers();
    turn();
    if (!failure_.empty()) throw Failure(failure_);
  }
}

void Supervisor::start_workers() {
  for (Run& run : runs_) {
    if (workers_.size() >= limits_.jobs) return;
    if (!run.is_running && !run.is_done() && !start_worker(run)) return;
  }
}

bool Supervisor::start_worker(Run& run) {
  constexpr double kPatience = 2;  // seconds: others may end and leave room
  std::vector<Step> steps;
  for (std::size_t i = run.next; i < run.rows.size(); ++i) steps.push_back(run.rows[i]->step);
  try {
    workers_.push_back(std::make_unique<Worker>(
        Worker{.process = WorkerProcess(settings_, folder_, run.subject, steps), .run = run}));
  } catch (const Failure& failure) {
    if (!run.refused) run.refused = Clock::now();
    if (workers_.empty() && seconds_since(*run.refused) > kPatience) {
      leave_row(run, RowOutcome::kFailed, failure.what());
    }
    return false;
  }
  run.refused.reset();
  run.is_running = true;
  return true;
}

void Supervisor::turn() {
  wait_for_events(is_reading_);
  take_signals();
  for (const auto& worker : workers_) take_answers(*worker);
  reap();
  is_reading_ = !read_finished_reports();
  if (Clock::now() - last_look_ >= kBetweenLooks) look();
}

void Supervisor::wait_for_events(bool is_busy) {
  std::vector<pollfd> watched{{signals_.descriptor(), POLLIN, 0}};
  for (const auto& worker : workers_) {
    watched.push_back({worker->process.answers(), POLLIN, 0});
    watched.push_back({worker->process.printed(), POLLIN, 0});
  }
  const int longest = is_busy ? 0 : static_cast<int>(kBetweenLooks.count());
  static_cast<void>(::poll(watched.data(), watched.size(), longest));
}

void Supervisor::take_signals() {
  if (const auto signal = signals_.take(); signal) {
    give_up("given up: " + signal_text(*signal), RowOutcome::kFailed);
  }
}

void Supervisor::reap() {
  int status = 0;
  for (pid_t pid = ::waitpid(-1, &status, WNOHANG); pid > 0;
       pid = ::waitpid(-1, &status, WNOHANG)) {
    const auto ended = std::find_if(workers_.begin(), workers_.end(), [pid](const auto& worker) {
      return worker->process.pid() == pid;
    });
    if (ended == workers_.end()) continue;  // what a command has left behind
    take_answers(**ended);
    bury(**ended, WIFSIGNALED(status)
                      ? signal_text(WTERMSIG(status))
                      : "the process ended with status " + std::to_string(WEXITSTATUS(status)));
    workers_.erase(ended);
  }
}

void Supervisor::bury(Worker& worker, const std::string& crash) {
  worker.run.is_running = false;
  watch_.end_commands_of(worker.process.pid());
  if (worker.run.is_done()) return;
  // It was ended for a row that had just been done: another one goes on with the next.
  const bool is_out_of_turn = worker.stopped && worker.past_limit.empty() && given_up_.empty();
  if (is_out_of_turn) return;
  if (!worker.failure.empty() && !has_results_) {
    failure_ = worker.failure;
  } else if (!worker.failure.empty()) {
    leave_row(worker, RowOutcome::kFailed, worker.failure);
  } else if (!given_up_.empty()) {
    leave_row(worker, given_up_as_, given_up_);
    skip_rest(worker.run);
  } else if (!worker.past_limit.empty()) {
    leave_row(worker, RowOutcome::kTimedOut, worker.past_limit);
  } else {
    const std::string where = worker.crashed_in.empty() ? "" : " in " + worker.crashed_in;
    leave_row(worker, RowOutcome::kCrashed, crash + where);
  }
}

void Supervisor::stop(Worker& worker) {
  // Without a list of processes, its commands are reached as its group only.
  ::kill(has_proc() ? worker.process.pid() : -worker.process.pid(), SIGKILL);
  if (!worker.stopped) worker.stopped = Clock::now();
}

}  // namespace host
