// What happened to a report's writer, beside what the report itself tells.
#include <algorithm>

#include "report/report.h"

namespace host {
namespace {

constexpr std::size_t kMostEvents = 10000;  // of those that may be done without

Sign sign_of(SectionOutcome outcome, Weight weight) {
  if (outcome == SectionOutcome::kTimedOut) return Sign::kTimedOut;
  if (outcome == SectionOutcome::kFailed) return Sign::kFailed;
  return weight == Weight::kUnlessTold ? Sign::kError : Sign::kLost;
}

}  // namespace

void Report::note(std::uint64_t offset, SectionOutcome outcome, const std::string& why,
                  Weight weight) {
  const bool is_spare = weight == Weight::kNever || weight == Weight::kUnlessTold;
  if (is_spare && events_.size() > kMostEvents) return;
  const bool is_known = !events_.empty() && events_.back().offset == offset &&
                        events_.back().outcome == outcome && events_.back().why == why;
  if (!is_known) events_.push_back({offset, outcome, why, weight});
  place_events();
}

void Report::place_events() {
  while (placed_events_ < events_.size() && events_[placed_events_].offset <= line_.offset) {
    events_[placed_events_++].line = line_.number;
  }
}

void Report::finish(const std::string& no_space) {
  if (line_.length > 0) end_line();
  read_content();  // the last line has no next one
  previous_ = {};
  end_section();
  for (; placed_events_ < events_.size(); ++placed_events_) {
    events_[placed_events_].line = line_.number;
  }
  for (std::size_t i = 0; i < events_.size(); ++i) {
    const auto next =
        std::find_if(events_.begin() + static_cast<std::ptrdiff_t>(i), events_.end(),
                     [&](const Event& event) { return event.line > events_[i].line; });
    apply(events_[i], next == events_.end() ? SIZE_MAX : next->line);
  }
  if (!no_space.empty()) blame_space(no_space);
  std::stable_sort(findings_.begin(), findings_.end(),
                   [](const Finding& a, const Finding& b) { return a.line < b.line; });
}

Section& Report::section_at(std::uint64_t offset) {
  const auto after = std::find_if(sections_.begin() + 1, sections_.end(),
                                  [offset](const Section& s) { return s.offset >= offset; });
  return *(after - 1);
}

// Whether one of these lines says that something is missing or wrong.
bool Report::is_told(std::size_t line, std::size_t next_line) const {
  return std::any_of(findings_.begin(), findings_.end(), [&](const Finding& finding) {
    return finding.line >= line && finding.line < next_line;
  });
}

void Report::apply(const Event& event, std::size_t next_line) {
  if (event.weight == Weight::kNever) return;
  Section& section = section_at(event.offset);
  const bool is_replaced = event.weight == Weight::kUnlessReplaced &&
                           section.outcome == SectionOutcome::kOk &&
                           section.output_offset >= event.offset;
  if (is_replaced) return;
  if (event.weight == Weight::kUnlessTold && is_told(event.line, next_line)) return;
  // That there was no room explains whatever else is wrong but what came from outside.
  const bool explains = event.outcome == SectionOutcome::kIncomplete &&
                        event.weight != Weight::kUnlessTold &&
                        section.outcome < SectionOutcome::kTimedOut;
  const bool is_news = section.why != event.why;
  if (event.outcome > section.outcome || explains) {
    section.outcome = event.outcome;
    section.why = event.why;
    section.why_line = event.weight == Weight::kForSection ? 0 : event.line;
  }
  if (event.weight == Weight::kForSection || !is_news) return;
  const std::string title = section.title.empty() ? "" : section.title + ": ";
  add_finding(
      {event.line, sign_of(event.outcome, event.weight),
       title + (title.empty() ? "" : text_of(event.outcome) + std::string(", ")) + event.why});
}

// What else could go wrong where there is no room: a command that could not write its output, a
// title that never reached the file.
void Report::blame_space(const std::string& no_space) {
  for (Section& section : sections_) {
    const bool is_explained = is_fault(section.outcome) && section.why != no_space &&
                              section.outcome <= SectionOutcome::kFailed;
    if (!is_explained) continue;
    section.outcome = SectionOutcome::kIncomplete;
    section.why = no_space;
    section.why_line = 0;
  }
  if (has_end_mark_ || !kind_.has_all_titles) return;
  for (const char* title : kind_.titles) {
    const bool is_there = std::any_of(sections_.begin(), sections_.end(),
                                      [title](const Section& s) { return s.title == title; });
    if (is_there) continue;
    sections_.push_back({.title = title, .outcome = SectionOutcome::kIncomplete, .why = no_space});
  }
}

}  // namespace host
