#include "run/supervisor.h"

#include <poll.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "run/product_library.h"
#include "run/supervisor_state.h"
#include "support/failure.h"
#include "support/text.h"

namespace host {
namespace {

constexpr auto kBetweenLooks = std::chrono::milliseconds(50);

sigset_t watched_signals() {
  sigset_t signals;
  ::sigemptyset(&signals);
  for (const int signal : {SIGCHLD, SIGINT, SIGTERM, SIGHUP}) ::sigaddset(&signals, signal);
  return signals;
}

}  // namespace

std::string signal_text(int signal) {
  const char* name = ::sigdescr_np(signal);
  return "signal " + std::to_string(signal) +
         (name == nullptr ? "" : " (" + std::string(name) + ")");
}

Supervisor::Supervisor(const RunSettings& settings, const OutputFolder& folder,
                       const Limits& limits, Progress& progress)
    : settings_(settings),
      folder_(folder),
      limits_(limits),
      progress_(progress),
      watch_(limits.command) {
  // Whatever a command leaves behind comes to this process.
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  const sigset_t signals = watched_signals();
  ::sigprocmask(SIG_BLOCK, &signals, nullptr);
  signals_ = Descriptor(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
  if (!signals_.is_open()) throw Failure("no signals: " + error_text(errno));
  note_own_libraries(settings.plugin);
}

Supervisor::~Supervisor() = default;

void Supervisor::add(const Subject& subject) {
  Run& run = runs_.emplace_back(Run{.subject = subject, .rows = {}});
  for (const Step& step : subject.steps) {
    Row& row = rows_.emplace_back(step);
    if (step.left_out.empty()) {
      run.rows.push_back(&row);
    } else {
      row.outcome = RowOutcome::kSkipped;
      row.why = step.left_out;
    }
  }
  progress_.add_rows(run.rows.size());
}

void Supervisor::run_all_but(const std::string& id) {
  const auto is_awaited = [&id](const Run& run) {
    return !run.is_done() && run.rows.front()->step.id != id;
  };
  while (std::any_of(runs_.begin(), runs_.end(), is_awaited) || !reading_.empty()) {
    if (given_up_.empty()) start_workers();
    turn();
    if (failure_.empty()) continue;
    stop_workers();
    finish();
    throw Failure(failure_);
  }
}

void Supervisor::start_workers() {
  for (Run& run : runs_) {
    if (workers_.size() >= limits_.jobs) return;
    if (run.is_running || run.is_done()) continue;
    std::vector<Step> steps;
    for (std::size_t i = run.next; i < run.rows.size(); ++i) steps.push_back(run.rows[i]->step);
    workers_.push_back(std::make_unique<Worker>(
        Worker{.process = WorkerProcess(settings_, folder_, run.subject, steps), .run = run}));
    run.is_running = true;
  }
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
  std::vector<pollfd> watched{{signals_.get(), POLLIN, 0}};
  for (const auto& worker : workers_) {
    watched.push_back({worker->process.answers(), POLLIN, 0});
    watched.push_back({worker->process.printed(), POLLIN, 0});
  }
  const int longest = is_busy ? 0 : static_cast<int>(kBetweenLooks.count());
  static_cast<void>(::poll(watched.data(), watched.size(), longest));
}

void Supervisor::take_signals() {
  signalfd_siginfo info{};
  while (::read(signals_.get(), &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
    const auto signal = static_cast<int>(info.ssi_signo);
    if (signal != SIGCHLD) give_up("given up: " + signal_text(signal), RowOutcome::kFailed);
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
    bury(**ended, status);
    workers_.erase(ended);
  }
}

void Supervisor::bury(Worker& worker, int status) {
  worker.run.is_running = false;
  watch_.end_commands_of(worker.process.pid());
  if (worker.run.is_done()) return;
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
    std::string why = WIFSIGNALED(status)
                          ? signal_text(WTERMSIG(status))
                          : "the process ended with status " + std::to_string(WEXITSTATUS(status));
    if (!worker.crashed_in.empty()) why += " in " + worker.crashed_in;
    leave_row(worker, RowOutcome::kCrashed, why);
  }
}

void Supervisor::stop_workers() {
  for (const auto& worker : workers_) ::kill(worker->process.pid(), SIGKILL);
}

}  // namespace host
