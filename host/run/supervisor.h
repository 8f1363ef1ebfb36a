// Starts the workers, follows what they do, and ends what hangs. Runs in one thread.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "result/progress.h"
#include "result/row.h"
#include "run/command_watch.h"
#include "run/signal_watch.h"
#include "run/worker.h"
#include "steps/steps.h"
#include "support/folder.h"
#include "support/mounts.h"
#include "work/glance.h"

namespace host {

struct Limits {
  std::size_t jobs = 1;
  double command = 55;  // seconds that a command may take
  double run = 0;       // seconds for everything; 0: any
};

class Supervisor {
 public:
  Supervisor(const RunSettings& settings, const SignalWatch& signals, const OutputFolder& folder,
             const Limits& limits, const FindingRules& findings, Progress& progress);
  Supervisor(const Supervisor&) = delete;
  Supervisor& operator=(const Supervisor&) = delete;
  ~Supervisor();

  // What is added gets its turn when what was added before has.
  void add(const Subject& subject);

  // Runs until the subjects that begin with rows of these ids are finished or given up, and until
  // all are where no id is given. Throws Failure when a worker can do nothing at all.
  void run(const std::vector<std::string>& awaited);

  // Ends the work where it is. What has been added since is not begun.
  void give_up(const std::string& why, RowOutcome outcome);

  // Ends whatever is left of the commands.
  void finish();

  [[nodiscard]] const std::deque<Row>& rows() const { return rows_; }
  [[nodiscard]] const std::vector<EndedCommand>& ended() const { return watch_.ended(); }
  [[nodiscard]] const std::optional<Found>& found(const std::string& id) const;
  [[nodiscard]] const Glance& glance() const { return glance_; }
  [[nodiscard]] const std::string& plugin_version() const { return plugin_version_; }
  [[nodiscard]] const std::string& given_up() const { return given_up_; }

 private:
  struct Worker;
  struct Run;  // of a subject

  // The loop.
  void start_workers();
  bool start_worker(Run& run);
  void turn();
  void wait_for_events(bool is_busy);
  void take_signals();
  void reap();
  void bury(Worker& worker, const std::string& crash);
  static void stop(Worker& worker);

  // From time to time.
  void look();
  void look_at(Worker& worker);
  void abandon_the_undying();
  void watch_commands();
  [[nodiscard]] std::vector<Progress::Running> running() const;

  // Rows.
  void take_answers(Worker& worker);
  void take(Worker& worker, const std::string& line);
  void take_child_end(Row& row, const std::string& text);
  void take_result(Worker& worker, const nlohmann::json& result);
  void leave_row(Run& run, RowOutcome outcome, const std::string& why);
  void leave_row(Worker& worker, RowOutcome outcome, const std::string& why);
  void next_row(Worker& worker);
  void skip_rest(Run& run);
  void note_short(Row& row, std::uint64_t size, Weight weight);
  static void note_lack(Run& run, const Row& row, const std::string& lack);
  [[nodiscard]] Row* find_row(const std::string& id);
  [[nodiscard]] Report& report_of(Row& row);
  bool read_report(Row& row, std::uint64_t end);
  bool read_finished_reports();

  const RunSettings& settings_;
  const SignalWatch& signals_;
  const OutputFolder& folder_;
  Limits limits_;
  const FindingRules& findings_;
  Progress& progress_;
  CommandWatch watch_;
  Glance glance_;
  std::string plugin_version_;
  std::map<std::string, std::optional<Found>> found_;
  std::deque<Row> rows_;  // stay where they are
  std::deque<Run> runs_;
  std::vector<std::unique_ptr<Worker>> workers_;
  std::vector<Row*> reading_;  // finished, but not their reports
  Clock::time_point start_ = Clock::now();
  Clock::time_point last_look_ = {};
  bool is_reading_ = false;
  bool has_results_ = false;
  std::string given_up_;
  RowOutcome given_up_as_ = RowOutcome::kFailed;
  Clock::time_point given_up_at_ = {};
  std::string no_space_;
  std::string failure_;
};

}  // namespace host
