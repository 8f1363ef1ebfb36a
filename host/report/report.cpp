#include "report/report.h"

#include <re2/re2.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>

#include "support/programs.h"
#include "support/text.h"

namespace host {
namespace {

constexpr std::size_t kHeld = 256;
constexpr std::size_t kHeldOfEnd = 61;
constexpr std::string_view kLeftOut = "...";
constexpr std::size_t kMostSections = 1000;
constexpr std::size_t kMostFindings = 500;  // of a kind
constexpr std::string_view kEndMark = "==End of Log==";
constexpr std::size_t kHeaderRule = 80;
constexpr std::size_t kHeaderLines = 12;

bool is_blank(std::string_view text) {
  return text.find_first_not_of(" \t\r\f\v") == std::string_view::npos;
}

// Whether a title is this text, or begins with it up to its "*".
bool matches(std::string_view pattern, std::string_view title) {
  if (!pattern.ends_with('*')) return pattern == title;
  return title.starts_with(pattern.substr(0, pattern.size() - 1));
}

bool is_among(const std::vector<const char*>& patterns, std::string_view title) {
  return std::any_of(patterns.begin(), patterns.end(),
                     [title](std::string_view pattern) { return matches(pattern, title); });
}

std::string replaced(std::string text, std::string_view what, std::string_view by) {
  if (const std::size_t at = text.find(what); at != std::string::npos) {
    text.replace(at, what.size(), by);
  }
  return text;
}

std::optional<std::time_t> time_of(const std::string& date) {
  constexpr std::time_t kWholeDay = 24L * 60 * 60 - 1;  // a day without a time ends with itself
  constexpr std::pair<const char*, std::time_t> kForms[] = {{"%Y-%m-%d", kWholeDay},
                                                            {"%b %d %H:%M:%S %Y", 0}};
  for (const auto& [form, more] : kForms) {
    std::tm time{};
    if (::strptime(date.c_str(), form, &time) != nullptr) return ::timegm(&time) + more;
  }
  return std::nullopt;
}

}  // namespace

// The blocks of a kind of report, made once.
struct Report::Compiled {
  explicit Compiled(const ReportKind& kind) {
    for (const BlockRule& block : kind.blocks) {
      starts.push_back(std::make_unique<RE2>(block.start));
      names.push_back(std::make_unique<RE2>(block.name));
    }
  }
  std::vector<std::unique_ptr<RE2>> starts;
  std::vector<std::unique_ptr<RE2>> names;
};

std::string words_of(const FindingRule& rule, const std::string& line,
                     const std::string& captured) {
  return rule.words.empty() ? line : replaced(rule.words, "{1}", captured);
}

const char* text_of(SectionOutcome outcome) {
  switch (outcome) {
    case SectionOutcome::kOk:
      return "ok";
    case SectionOutcome::kNotHere:
      return "not available here";
    case SectionOutcome::kEmpty:
      return "empty";
    case SectionOutcome::kIncomplete:
      return "incomplete";
    case SectionOutcome::kFailed:
      return "failed";
    case SectionOutcome::kTimedOut:
      return "timed out";
    case SectionOutcome::kCrashed:
      return "crashed";
  }
  return "";
}

Report::Report(const ReportKind& kind, const FindingRules& rules, std::time_t now)
    : kind_(kind), rules_(rules), now_(now) {
  static std::map<const ReportKind*, std::shared_ptr<const Compiled>> known;
  std::shared_ptr<const Compiled>& compiled = known[&kind];
  if (compiled == nullptr) compiled = std::make_shared<Compiled>(kind);
  compiled_ = compiled;
  line_.number = 1;
  begin_section("");
}

void Report::feed(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t end = std::min(bytes.find('\n'), bytes.size());
    take(bytes.substr(0, end));
    bytes.remove_prefix(end);
    if (bytes.empty()) return;
    bytes.remove_prefix(1);
    ++offset_;
    end_line();
  }
}

void Report::take(std::string_view bytes) {
  if (line_.length == 0) line_.is_rule = true;
  line_.is_rule = line_.is_rule && bytes.find_first_not_of('=') == std::string_view::npos;
  line_.length += bytes.size();
  offset_ += bytes.size();
  const std::size_t taken = std::min(bytes.size(), kHeld - line_.text.size());
  line_.text += bytes.substr(0, taken);
  bytes.remove_prefix(taken);
  if (bytes.size() >= kHeldOfEnd) {
    line_.tail = bytes.substr(bytes.size() - kHeldOfEnd);
  } else if (!bytes.empty()) {
    line_.tail += bytes;
    line_.tail.erase(0, line_.tail.size() - std::min(line_.tail.size(), kHeldOfEnd));
  }
}

bool Report::is_title(const Line& line) const {
  return line.length > 0 && line.length == line_.length && line_.is_rule &&
         is_among(kind_.titles, line.text);
}

// A line is looked at when the next one has come: it may turn out a title.
void Report::end_line() {
  if (line_.length > kHeld) {
    const std::string end = line_.text.substr(kHeld - kHeldOfEnd) + line_.tail;
    line_.text.resize(kHeld - kHeldOfEnd - kLeftOut.size());
    line_.text.append(kLeftOut).append(end, end.size() - kHeldOfEnd);
  }
  if (in_header_) {
    in_header_ = !(line_.is_rule && line_.length == kHeaderRule) && line_.number < kHeaderLines;
    previous_ = {};
  } else if (is_title(previous_)) {
    begin_section(previous_.text);
    previous_ = {};
  } else {
    read_content();
    std::swap(previous_, line_);
  }
  const std::size_t number = std::max(line_.number, previous_.number) + 1;
  line_.text.clear();
  line_.tail.clear();
  line_.length = 0;
  line_.is_rule = false;
  line_.number = number;
  line_.offset = offset_;
  place_events();
}

void Report::read_content() {
  if (is_blank(previous_.text)) return;
  if (previous_.text == kEndMark) {
    has_end_mark_ = true;
    return;
  }
  has_end_mark_ = false;
  ++sections_.back().content;
  if (kind_.is_output) return;
  if (previous_.text.find("ermission denied") != std::string::npos) ++denied_;
  classify();
}

void Report::classify() {
  if (in_output_) return;
  begin_block();
  std::string captured;
  const FindingRule* rule = active_rules_->find(previous_.text, captured);
  if (rule != nullptr) apply(*rule, captured);
}

void Report::apply(const FindingRule& rule, const std::string& captured) {
  Section& section = sections_.back();
  const std::string words = words_of(rule, previous_.text, captured);
  switch (rule.sign) {
    case Sign::kOutput:
      in_output_ = true;
      section.output_offset = previous_.offset;
      --section.content;
      return;
    case Sign::kNotTried:
      section.outcome = SectionOutcome::kFailed;
      return;
    case Sign::kTried:
      if (section.outcome == SectionOutcome::kFailed) section.tried.push_back(captured);
      return;
    case Sign::kNotHere:
      judge(SectionOutcome::kNotHere, words, previous_.number);
      return;
    case Sign::kEnds:
      add_ending(words, captured);
      return;
    case Sign::kFailed:
      judge(SectionOutcome::kFailed, words, previous_.number);
      break;
    case Sign::kLost:
    case Sign::kError:
      judge(SectionOutcome::kIncomplete, words, previous_.number);
      break;
    case Sign::kWrong:
    case Sign::kTimedOut:
      break;
  }
  is_out_of_space_ = is_out_of_space_ || previous_.text.ends_with(" = 28");
  add_finding({previous_.number, rule.sign, words});
}

void Report::add_finding(Finding finding) {
  const std::size_t count = ++found_[finding.sign];
  if (count > kMostFindings) return;
  if (count == kMostFindings) finding.text = "There are more lines like those above";
  findings_.push_back(std::move(finding));
}

void Report::add_ending(const std::string& words, const std::string& date) {
  constexpr std::time_t kDay = 24L * 60 * 60;
  constexpr int kSoon = 60;
  const auto end = time_of(date);
  if (!end) return;
  const auto days = static_cast<int>((*end - now_ + kDay / 2) / kDay);
  if (days > kSoon) return;
  std::array<char, 16> day{};
  std::tm time{};
  ::gmtime_r(&*end, &time);
  static_cast<void>(std::strftime(day.data(), day.size(), "%Y-%m-%d", &time));
  const bool has_ended = *end < now_;
  const std::string when =
      has_ended ? " ended on "
                : " ends in " + counted(static_cast<std::size_t>(days), "day") + ", on ";
  add_finding(
      {previous_.number, Sign::kEnds, words + when + day.data(), days - (has_ended ? 1 : 0)});
}

void Report::begin_block() {
  for (const std::size_t i : active_blocks_) {
    std::string name;
    if (RE2::PartialMatch(previous_.text, *compiled_->starts[i], &name)) {
      end_block();
      block_ = name;
      return;
    }
    if (*kind_.blocks[i].name != '\0' &&
        RE2::PartialMatch(previous_.text, *compiled_->names[i], &name)) {
      block_ += " (" + name + ")";
      return;
    }
  }
}

// Only at its end is the whole name of a block known.
void Report::end_block() {
  for (std::size_t i = block_findings_; i < findings_.size(); ++i) {
    findings_[i].text = replaced(findings_[i].text, "{block}", block_);
  }
  block_findings_ = findings_.size();
  block_.clear();
}

void Report::begin_section(const std::string& title) {
  if (!sections_.empty()) end_section();
  if (sections_.size() < kMostSections) {
    sections_.push_back({title, previous_.number, previous_.offset});
  }
  in_output_ = false;
  active_rules_ = &rules_.of(kind_, title);
  active_blocks_.clear();
  for (std::size_t i = 0; i < kind_.blocks.size(); ++i) {
    if (title.find(kind_.blocks[i].section) != std::string::npos) active_blocks_.push_back(i);
  }
}

void Report::end_section() {
  end_block();
  Section& section = sections_.back();
  if (!section.tried.empty()) judge_tried();
  const bool may_be_empty = section.title.empty() || is_among(kind_.headings, section.title);
  if (section.content == 0 && !may_be_empty) judge(SectionOutcome::kEmpty, "nothing in it", 0);
}

// That none of the alternatives is on this machine is no fault.
void Report::judge_tried() {
  Section& section = sections_.back();
  std::string all;
  bool any_here = false;
  for (const std::string& command : section.tried) {
    all += (all.empty() ? "" : ", ") + command;
    any_here = any_here || is_here(command);
  }
  section.outcome = any_here ? SectionOutcome::kFailed : SectionOutcome::kNotHere;
  section.why = any_here ? "no command succeeded: " + all : "this machine has none of: " + all;
}

void Report::judge(SectionOutcome outcome, const std::string& why, std::size_t line) {
  Section& section = sections_.back();
  if (outcome <= section.outcome) return;
  section.outcome = outcome;
  section.why = why;
  section.why_line = line;
}

bool Follower::read_on(const OutputFolder& folder, const std::string& file, Report& report,
                       std::size_t most, std::uint64_t end) {
  if (!file_.is_open()) file_ = folder.open(file);
  if (!file_.is_open()) return true;
  std::array<char, 65536> block;
  for (std::size_t taken = 0; taken < most;) {
    const std::uint64_t last = std::min<std::uint64_t>(kLargestFile, end);
    if (report.size() >= last) return true;
    const ssize_t got = ::read(file_.get(), block.data(),
                               std::min<std::uint64_t>(block.size(), last - report.size()));
    if (got <= 0) return true;
    report.feed({block.data(), static_cast<std::size_t>(got)});
    taken += static_cast<std::size_t>(got);
  }
  return false;
}

}  // namespace host
