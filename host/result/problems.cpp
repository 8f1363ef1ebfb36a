#include <algorithm>

#include "result/collection.h"
#include "support/text.h"

namespace host {
namespace {

// From worst to mildest.
enum Rank : int {
  kGivenUp,
  kRowCrashed,
  kRowTimedOut,
  kRowFailed,
  kSectionLost,
  kCommandEnded,
  kSectionFailed,
  kPartMissing,
  kEnded,
  kUnreadable,
  kEndsSoon
};

int rank_of(const Finding& finding) {
  switch (finding.sign) {
    case Sign::kTimedOut:
      return kCommandEnded;
    case Sign::kLost:
      return kSectionLost;
    case Sign::kFailed:
      return kSectionFailed;
    case Sign::kError:
      return kPartMissing;
    case Sign::kEnds:
      return finding.days < 0 ? kEnded : kEndsSoon;
    default:
      return kUnreadable;
  }
}

int rank_of(SectionOutcome outcome) {
  switch (outcome) {
    case SectionOutcome::kTimedOut:
    case SectionOutcome::kCrashed:
      return kCommandEnded;
    case SectionOutcome::kIncomplete:
      return kSectionLost;
    default:
      return kSectionFailed;
  }
}

int rank_of(RowOutcome outcome) {
  switch (outcome) {
    case RowOutcome::kCrashed:
      return kRowCrashed;
    case RowOutcome::kTimedOut:
      return kRowTimedOut;
    case RowOutcome::kFailed:
      return kRowFailed;
    default:
      return kPartMissing;
  }
}

Problem problem_of(const Cut& cut) {
  const std::string size = size_text(cut.bytes);
  return {kPartMissing,
          cut.file + (cut.left_out == 0 ? " is too long, but its " + size + " could not be cut"
                                        : ": " + size_text(cut.left_out) + " of " + size +
                                              " are left out in its middle")};
}

class Problems {
 public:
  void add(Problem problem) { all_.push_back(std::move(problem)); }

  void add_row(const Row& row) {
    if (row.report != nullptr && row.bytes > 0) add_report(row);
    // The sections of a partial row tell of themselves.
    const bool is_partial = row.outcome == RowOutcome::kPartial && row.report != nullptr;
    const std::string& why = is_partial ? row.own_faults : row.why;
    if (!is_fault(row.outcome) || (is_partial && why.empty())) return;
    add({rank_of(row.outcome),
         row.step.title + ": " + text_of(row.outcome) + (why.empty() ? "" : ", " + why),
         row.bytes > 0 ? row.step.file : ""});
  }

  // What the files tell beside the reports, and which of them do not go home whole.
  void add_files(const Collection& collection) {
    for (const auto& [file, finding] : collection.in_files) {
      add({rank_of(finding), finding.text, file, finding.line});
    }
    for (const Cut& cut : collection.contents.cuts) {
      if (!cut.is_meant) add(problem_of(cut));
    }
    for (const std::string& file : collection.contents.masking.no_texts) {
      add({kUnreadable, file + (collection.contents.goes_into_archive
                                    ? " is left out: it is no text, and could not be masked"
                                    : " is no text: secrets in it are not masked")});
    }
    for (const Absent& absent : collection.contents.absent) {
      add({kUnreadable, absent.name + " is not in the archive: " + absent.why});
    }
  }

  [[nodiscard]] bool tell_of(const std::string& command) const {
    return std::any_of(all_.begin(), all_.end(), [&command](const Problem& problem) {
      return problem.text.find("\"" + command + "\"") != std::string::npos;
    });
  }

  std::vector<Problem> take() {
    std::stable_sort(all_.begin(), all_.end(),
                     [](const Problem& a, const Problem& b) { return a.rank < b.rank; });
    return std::move(all_);
  }

 private:
  void add_report(const Row& row) {
    // The row itself tells where it was given up.
    const bool is_left = is_fault(row.outcome) && row.outcome != RowOutcome::kPartial;
    for (const Section& section : row.report->sections()) {
      const bool is_told = section.why_line != 0 || (is_left && section.why == row.why);
      if (!is_fault(section.outcome) || is_told) continue;
      const std::string& title = section.title.empty() ? row.step.title : section.title;
      add({rank_of(section.outcome), title + ": " + text_of(section.outcome) + ", " + section.why,
           row.step.file, section.line});
    }
    for (const Finding& finding : row.report->findings()) {
      if (is_left && finding.text == row.why) continue;
      add({rank_of(finding), finding.text, row.step.file, finding.line});
    }
  }

  std::vector<Problem> all_;
};

}  // namespace

bool Collection::is_complete() const {
  return given_up.empty() && std::ranges::all_of(contents.cuts, &Cut::is_meant) &&
         contents.masking.failed.empty() &&
         std::none_of(rows.begin(), rows.end(),
                      [](const Row& row) { return is_fault(row.outcome); });
}

std::vector<Problem> problems_of(const Collection& collection) {
  Problems problems;
  if (!collection.given_up.empty()) {
    const auto skipped =
        std::count_if(collection.rows.begin(), collection.rows.end(), [&](const Row& row) {
          return row.outcome == RowOutcome::kSkipped && row.why == collection.given_up;
        });
    problems.add({kGivenUp, "The run did not come to its end (" + collection.given_up + "); " +
                                counted(static_cast<std::size_t>(skipped), "row") + " not begun"});
  }
  if (const std::string& failed = collection.contents.masking.failed; !failed.empty()) {
    problems.add({kGivenUp, "NOT ALL SECRETS ARE MASKED, do not send this: " + failed});
  }
  for (const Row& row : collection.rows) problems.add_row(row);
  for (const EndedCommand& command : collection.commands) {
    const bool has_ended = command.end.find("still running") == std::string::npos;
    if (has_ended && problems.tell_of(command.command_line)) continue;
    problems.add({kCommandEnded, "\"" + command.command_line + "\" " + command.end + " after " +
                                     seconds_text(command.seconds) + " s"});
  }
  problems.add_files(collection);
  return problems.take();
}

}  // namespace host
