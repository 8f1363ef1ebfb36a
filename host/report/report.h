// Reads a report, also while it is being written: its sections, what became of each, and the lines
// that tell that something is missing or wrong. Holds 256 bytes of a line at most.
#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "report/finding_rules.h"
#include "report/kinds.h"
#include "support/descriptor.h"
#include "support/folder.h"

namespace host {

// No report may grow longer, in bytes, and none is read any further.
constexpr std::uint64_t kLargestFile = std::uint64_t{1} << 30U;

// What became of a section, from well to bad.
enum class SectionOutcome { kOk, kNotHere, kEmpty, kIncomplete, kFailed, kTimedOut, kCrashed };

[[nodiscard]] const char* text_of(SectionOutcome outcome);
[[nodiscard]] inline bool is_fault(SectionOutcome outcome) {
  return outcome >= SectionOutcome::kEmpty;
}

struct Section {
  std::string title;
  std::size_t line = 0;
  std::uint64_t offset = 0;  // of its title in the file
  SectionOutcome outcome = SectionOutcome::kOk;
  std::string why = {};
  std::size_t why_line = 0;             // the finding that tells why; 0 where it is none
  std::size_t content = 0;              // lines that are not blank
  std::uint64_t output_offset = 0;      // of what a command printed
  std::vector<std::string> tried = {};  // commands of which none succeeded
};

// Something missing or wrong, and the line that tells so.
struct Finding {
  std::size_t line;
  Sign sign;
  std::string text;
  int days = 0;  // until the day on which something ends
};

// What a rule says of a line; {block} is left for whoever knows the block.
[[nodiscard]] std::string words_of(const FindingRule& rule, const std::string& line,
                                   const std::string& captured);

// When something that happened to a report's writer counts.
enum class Weight {
  kAlways,
  kUnlessReplaced,  // by another command of a section's list
  kUnlessTold,      // by a line of what a command has printed
  kForSection,      // but not as a finding: its row tells of it
  kNever            // it only parts what is before from what is behind
};

class Report {
 public:
  // `now` tells whether what ends on a day has ended.
  Report(const ReportKind& kind, const FindingRules& rules, std::time_t now);

  void feed(std::string_view bytes);

  // Nothing more comes. Where there was no room for what was to be written, `no_space` says so.
  void finish(const std::string& no_space);

  // The writer was at this place of the file, which has not been read yet, when something happened
  // to it.
  void note(std::uint64_t offset, SectionOutcome outcome, const std::string& why, Weight weight);

  [[nodiscard]] const std::string& current_title() const { return sections_.back().title; }
  [[nodiscard]] const std::vector<Section>& sections() const { return sections_; }
  [[nodiscard]] const std::vector<Finding>& findings() const { return findings_; }
  [[nodiscard]] std::size_t denied() const { return denied_; }
  [[nodiscard]] std::uint64_t size() const { return offset_; }
  [[nodiscard]] bool is_out_of_space() const { return is_out_of_space_; }
  [[nodiscard]] bool has_end_mark() const { return has_end_mark_; }

 private:
  struct Line {
    std::string text = {};  // of a long one its start and its end
    std::string tail = {};
    std::size_t length = 0;
    std::size_t number = 0;
    std::uint64_t offset = 0;
    bool is_rule = false;  // nothing but "="
  };
  struct Event {
    std::uint64_t offset;
    SectionOutcome outcome;
    std::string why;
    Weight weight;
    std::size_t line = 0;  // where what the writer wrote next begins
  };

  void take(std::string_view bytes);
  void end_line();
  void read_content();
  void classify();
  void apply(const FindingRule& rule, const std::string& captured);
  void add_finding(Finding finding);
  void add_ending(const std::string& words, const std::string& date);
  void begin_block();
  void end_block();
  void begin_section(const std::string& title);
  void end_section();
  void judge(SectionOutcome outcome, const std::string& why, std::size_t line);
  void judge_tried();
  [[nodiscard]] bool is_title(const Line& line) const;

  // What happened to the writer.
  void place_events();
  void apply(const Event& event, std::size_t next_line);
  [[nodiscard]] Section& section_at(std::uint64_t offset);
  [[nodiscard]] bool is_told(std::size_t line, std::size_t next_line) const;
  void blame_space(const std::string& no_space);

  struct Compiled;
  const ReportKind& kind_;
  const FindingRules& rules_;
  std::shared_ptr<const Compiled> compiled_;
  const SectionRules* active_rules_ = nullptr;
  std::vector<std::size_t> active_blocks_;
  std::time_t now_;

  std::vector<Section> sections_;
  std::vector<Finding> findings_;
  std::map<Sign, std::size_t> found_;
  std::vector<Event> events_;
  std::size_t placed_events_ = 0;
  std::string block_;
  std::size_t block_findings_ = 0;  // where those of the block begin
  Line line_;
  Line previous_;
  bool in_header_ = true;
  bool in_output_ = false;
  bool has_end_mark_ = false;
  bool is_out_of_space_ = false;
  std::size_t denied_ = 0;
  std::uint64_t offset_ = 0;
};

// Reads what has been written to a file so far.
class Follower {
 public:
  // At most about `most` bytes, and none behind `end`; true when there was nothing more.
  bool read_on(const OutputFolder& folder, const std::string& file, Report& report,
               std::size_t most, std::uint64_t end);

 private:
  Descriptor file_;
};

}  // namespace host
