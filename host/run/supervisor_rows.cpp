// What becomes of the rows while their workers are at them.
#include <cerrno>
#include <csignal>
#include <ctime>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>

#include "run/supervisor.h"
#include "run/supervisor_state.h"
#include "support/text.h"

namespace host {

using nlohmann::json;

namespace {

constexpr std::size_t kReadAtOnce = 4U << 20U;

// A line of which at least the kind is known.
struct Answer {
  char kind;
  std::string text;
};

// A shell tells in its own way of a signal that has ended what it ran.
std::string exit_text(int status) {
  constexpr int kSignals = 128;
  const std::string text = "exit status " + std::to_string(status);
  return text + (status > kSignals && status < kSignals + NSIG
                     ? ", that is " + signal_text(status - kSignals)
                     : "");
}

// What a line about an ended child says.
struct ChildEnd {
  pid_t pid = 0;
  bool is_exit = false;
  int status = 0;  // of its exit, or its signal
  bool is_short = false;
  std::uint64_t size = 0;
  std::string name = {};
};

std::optional<ChildEnd> read_child_end(const std::string& text) {
  std::istringstream fields(text);
  ChildEnd child;
  int code = 0;
  int is_short = 0;
  if (!(fields >> child.pid >> code >> child.status >> is_short >> child.size)) return {};
  child.is_exit = code == CLD_EXITED;
  child.is_short = is_short != 0;
  std::getline(fields >> std::ws, child.name);
  // The name of the shell that ran it tells nothing.
  child.name = child.name.empty() || child.name == "sh" ? "a command" : printable(child.name);
  return child;
}

Answer read_answer(const std::string& line) {
  return {line.empty() ? '?' : line[0], line.size() > 2 ? line.substr(2) : ""};
}

}  // namespace

const std::optional<Found>& Supervisor::found(const std::string& id) const {
  static const std::optional<Found> nothing;
  const auto at = found_.find(id);
  return at == found_.end() ? nothing : at->second;
}

void Supervisor::take_answers(Worker& worker) {
  worker.process.take_printed();
  for (const std::string& line : worker.process.take_lines()) {
    try {
      if (!worker.run.is_done()) take(worker, line);
    } catch (const json::exception&) {  // not a line of ours: a product is in the same process
    }
  }
}

void Supervisor::take(Worker& worker, const std::string& line) {
  const Answer answer = read_answer(line);
  // A child that has ended is no sign of life: a product may start any number of them.
  if (answer.kind != 'c') worker.last_activity = worker.last_growth = Clock::now();
  switch (answer.kind) {
    case 'c':
      take_child_end(*worker.run.row(), answer.text);
      break;
    case 'r':
      take_result(worker, json::parse(answer.text));
      break;
    case 'n':
      worker.run.row()->now = answer.text;
      break;
    case 'g':
      glance_.add(json::parse(answer.text));
      break;
    case 'x':
      worker.crashed_in = answer.text;
      break;
    case 'v':
      plugin_version_ = answer.text;
      break;
    case 'f':
      worker.failure = answer.text;
      break;
    default:
      break;
  }
}

void Supervisor::take_child_end(Row& row, const std::string& text) {
  const std::optional<ChildEnd> child = read_child_end(text);
  if (!child) return;
  const bool succeeded = child->is_exit && child->status == 0;
  const std::string end = child->is_exit ? exit_text(child->status) : signal_text(child->status);
  if (!row.exit_of_first) row.exit_of_first = end;
  if (child->is_short) {
    note_short(row, child->size, succeeded ? Weight::kAlways : Weight::kUnlessReplaced);
  }
  // What the user has asked to be captured tells of its end itself.
  if (row.step.kind->report == nullptr || row.step.kind->report().is_output) return;
  Report& report = report_of(row);
  const std::string what = child->name + " ended with " + end;
  const bool goes_on = child->is_exit && !row.step.kind->report().fails_with_command;
  if (succeeded || goes_on || watch_.is_asked_to_end(child->pid)) {
    report.note(child->size, SectionOutcome::kOk, what, Weight::kNever);
  } else if (child->is_exit) {
    report.note(child->size, SectionOutcome::kIncomplete, what, Weight::kUnlessTold);
  } else {
    report.note(child->size, SectionOutcome::kFailed, what, Weight::kUnlessReplaced);
  }
}

void Supervisor::take_result(Worker& worker, const json& result) {
  Row& row = *worker.run.row();
  if (result.contains("code")) row.code = result.at("code").get<int>();
  row.why = result.value("why", "");
  row.nothing = result.value("nothing", "");
  if (result.contains("found")) {
    found_[row.step.id] = result.at("found").get<Found>();
    conclude_discovery(row, *found_[row.step.id]);
  }
  has_results_ = true;
  if (row.code.value_or(0) != 0) {
    note_lack(worker.run, row, "what " + row.step.id + " finds may be known in part only");
  }
  next_row(worker);
}

// The row is left as it is, and what it has written stays.
void Supervisor::leave_row(Worker& worker, RowOutcome outcome, const std::string& why) {
  const Row& row = *worker.run.row();
  const std::string said = worker.process.last_printed_line();
  worker.run.row()->seconds = seconds_since(worker.row_start);
  leave_row(worker.run, outcome,
            why + (row.now.empty() ? "" : ", " + row.now) + (said.empty() ? "" : ": " + said));
}

void Supervisor::leave_row(Run& run, RowOutcome outcome, const std::string& why) {
  Row& row = *run.row();
  row.outcome = outcome;
  row.why = printable(why);
  if (row.step.kind->report != nullptr) {
    const bool is_crash = outcome == RowOutcome::kCrashed;
    report_of(row).note(folder_.size_of(row.step.file),
                        is_crash ? SectionOutcome::kCrashed : SectionOutcome::kTimedOut, row.why,
                        Weight::kForSection);
  }
  note_lack(run, row, "what " + row.step.id + " finds is not known, since it was given up");
  reading_.push_back(&row);
  ++run.next;
}

// Rows that need what this one finds have to tell of it, too.
void Supervisor::note_lack(Run& run, const Row& row, const std::string& lack) {
  for (Row* other : run.rows) {
    if (other->step.kind->needs == std::string(row.step.kind->id)) other->lacks = lack;
  }
}

void Supervisor::next_row(Worker& worker) {
  Row& row = *worker.run.row();
  row.seconds = seconds_since(worker.row_start);
  reading_.push_back(&row);
  ++worker.run.next;
  worker.row_start = worker.last_activity = worker.last_growth = Clock::now();
  worker.size = 0;
  worker.crashed_in.clear();
  worker.past_limit.clear();
  worker.process.forget_printed();
}

void Supervisor::skip_rest(Run& run) {
  for (; !run.is_done(); ++run.next) {
    run.row()->outcome = RowOutcome::kSkipped;
    run.row()->why = given_up_;
    progress_.finished(*run.row());
  }
}

void Supervisor::note_short(Row& row, std::uint64_t size, Weight weight) {
  row.is_short_of_space = true;
  if (no_space_.empty()) {
    no_space_ = "no space left on " + file_system_of(folder_.descriptor());
    progress_.say(no_space_);
  }
  if (row.step.kind->report != nullptr) {
    report_of(row).note(size, SectionOutcome::kIncomplete, no_space_, weight);
  }
}

Report& Supervisor::report_of(Row& row) {
  if (row.report == nullptr) {
    row.report = std::make_unique<Report>(row.step.kind->report(), findings_, std::time(nullptr));
  }
  return *row.report;
}

// Reads on in the report of a row; true when there is nothing more in it for now.
bool Supervisor::read_report(Row& row, std::uint64_t end) {
  if (row.step.kind->report == nullptr) return true;
  return row.follower.read_on(folder_, row.step.file, report_of(row), kReadAtOnce, end);
}

bool Supervisor::read_finished_reports() {
  constexpr double kPatience = 3;  // once the run is given up
  const bool is_hurried = !given_up_.empty() && seconds_since(given_up_at_) > kPatience;
  bool is_all_read = true;
  for (auto at = reading_.begin(); at != reading_.end();) {
    Row& row = **at;
    if (!read_report(row, UINT64_MAX) && !is_hurried) {
      is_all_read = false;
      ++at;
      continue;
    }
    if (row.report != nullptr && (row.report->is_out_of_space() || row.code == ENOSPC)) {
      note_short(row, row.report->size(), Weight::kAlways);
    }
    conclude(row, folder_, no_space_);
    progress_.finished(row);
    at = reading_.erase(at);
  }
  return is_all_read;
}

}  // namespace host
