#include "result/row.h"

#include <algorithm>

#include "catalogue.h"
#include "meaning.h"
#include "support/text.h"

namespace host {
namespace {

// The sections that are not what they should be, in a few words; empty when all are.
std::string faults_of(const std::vector<Section>& sections) {
  std::string faults;
  std::size_t more = 0;
  constexpr std::size_t kEnough = 100;
  for (const Section& section : sections) {
    if (!is_fault(section.outcome)) continue;
    if (faults.size() > kEnough) {
      ++more;
      continue;
    }
    faults += faults.empty() ? "" : ", ";
    faults += section.title.empty() ? section.why : section.title + " " + text_of(section.outcome);
  }
  return faults + (more == 0 ? "" : " and " + std::to_string(more) + " more");
}

// What the plug-in's code means, unless it is success.
std::string meaning_of(const Row& row) {
  const int code = row.code.value_or(0);
  if (code == 0) return "";
  return "result " + std::to_string(code) + ", " +
         meaning_of(find_entry(row.step.kind->call), code) +
         (row.why.empty() ? "" : ": " + row.why);
}

std::string why_no_end(const Report& report) {
  if (report.size() < kLargestFile) return "the report has no end";
  return "cut at " + size_text(kLargestFile) + ", the most that a file may have";
}

// A row whose report is there.
void conclude_report(Row& row, const std::string& lost) {
  const Report& report = *row.report;
  const bool is_whole = (report.has_end_mark() || !row.step.kind->report().has_end_mark) &&
                        report.size() < kLargestFile;
  const std::string no_end = is_whole ? "" : lost.empty() ? why_no_end(report) : lost;
  for (const std::string& why : {meaning_of(row), no_end, row.lacks}) {
    if (!why.empty()) row.own_faults += (row.own_faults.empty() ? "" : "; ") + why;
  }
  const std::string faults = faults_of(report.sections());
  row.why = faults + (faults.empty() || row.own_faults.empty() ? "" : "; ") + row.own_faults;
  row.outcome = row.why.empty() ? RowOutcome::kOk : RowOutcome::kPartial;
}

// A row that promises a report and has made none.
void conclude_missing(Row& row, const std::string& lost) {
  const std::string meaning = meaning_of(row);
  row.outcome = RowOutcome::kFailed;
  for (const std::string& why : {lost, meaning, row.why, std::string("no report was made")}) {
    if (why.empty()) continue;
    row.why = why;
    return;
  }
}

// However a command of the user's ends, what it has printed is there: only one that could not run
// to its own end counts.
void conclude_capture(Row& row) {
  if (!is_capture(row.step) || !row.exit_of_first || row.report == nullptr) return;
  if (row.report->sections().front().outcome == SectionOutcome::kTimedOut) {
    row.outcome = RowOutcome::kTimedOut;
  } else if (*row.exit_of_first != "exit status 0" && row.outcome == RowOutcome::kOk) {
    const bool is_its_own = row.exit_of_first->starts_with("exit status") &&
                            !row.exit_of_first->ends_with(" 126") &&
                            !row.exit_of_first->ends_with(" 127");
    row.why = *row.exit_of_first;
    // Nobody has asked for the usual ones by name: one that this machine cannot run is not missed.
    if (!is_its_own && row.step.kind->on == On::kCommand) row.outcome = RowOutcome::kFailed;
  }
}

}  // namespace

const char* text_of(RowOutcome outcome) {
  switch (outcome) {
    case RowOutcome::kWaiting:
      return "waiting";
    case RowOutcome::kOk:
      return "ok";
    case RowOutcome::kPartial:
      return "partial";
    case RowOutcome::kFailed:
      return "failed";
    case RowOutcome::kTimedOut:
      return "timed out";
    case RowOutcome::kCrashed:
      return "crashed";
    case RowOutcome::kSkipped:
      return "skipped";
  }
  return "";
}

bool is_fault(RowOutcome outcome) {
  return outcome != RowOutcome::kOk && outcome != RowOutcome::kSkipped;
}

void conclude_discovery(Row& row, const Found& found) {
  std::string faults;
  std::string names;
  const auto add = [](std::string& list, const std::string& text, const char* between) {
    list += (list.empty() ? "" : between) + text;
  };
  for (const std::string& missing : found.missing) add(faults, missing, "; ");
  for (const Installation& installation : found.installations) {
    if (!installation.version.empty()) {
      add(names, installation.key + " in " + installation.directory, ", ");
    } else if (installation.directory.empty() ||
               faults.find(installation.directory) != std::string::npos) {
      continue;  // it is not even there
    } else {
      add(faults,
          "the version of " + installation.directory +
              " cannot be read, so nothing of it can be asked for",
          "; ");
    }
  }
  row.outcome = faults.empty() ? RowOutcome::kOk : RowOutcome::kPartial;
  row.why = faults;
  add(row.why, names.empty() ? "no installation found" : names, "; ");
}

void conclude(Row& row, const OutputFolder& folder, const std::string& no_space) {
  const std::string lost = row.is_short_of_space ? no_space : "";
  const bool has_report = row.report != nullptr && row.report->size() > 0;
  if (has_report) {
    row.bytes = row.report->size();
    row.report->finish(lost);
  } else if (!row.step.file.empty()) {
    folder.remove(row.step.file);  // made beforehand, and empty
  }
  if (row.outcome != RowOutcome::kWaiting) return;  // it was left, or tells of a discovery
  const bool has_failed = !row.code && !row.why.empty();
  if (has_failed) {
    row.outcome = RowOutcome::kFailed;
  } else if (has_report) {
    conclude_report(row, lost);
    conclude_capture(row);
  } else if (!row.nothing.empty()) {
    row.outcome = row.lacks.empty() ? RowOutcome::kOk : RowOutcome::kPartial;
    row.own_faults = row.lacks;
    row.why = row.lacks.empty() ? row.nothing : row.lacks;
  } else if (!row.step.file.empty()) {
    conclude_missing(row, lost);
  } else {
    row.outcome = RowOutcome::kOk;
  }
}

}  // namespace host
