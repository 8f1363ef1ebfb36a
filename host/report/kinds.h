// What the reports look like and which of their lines tell that something is missing or wrong.
#pragma once

#include <vector>

namespace host {

// What a line tells.
enum class Sign {
  kOutput,    // what a command printed follows up to the next title
  kNotTried,  // no alternative of a section succeeded; the tried ones follow
  kTried,     // one of those
  kNotHere,   // a program that this machine does not have
  kLost,      // no room or no file for what was to be written
  kFailed,    // a section is not what its title says
  kError,     // a part of it is missing
  kWrong,     // the report is whole and tells of something wrong
  kEnds,      // something ends on a day
  kTimedOut,  // a command was ended for its age: no line tells this, the supervisor does
};

// A line that belongs to the layout.
struct LayoutRule {
  const char* pattern;
  Sign sign;
};

// Lines that belong to one thing, from the line that begins it up to the next such line or title.
struct BlockRule {
  const char* section;
  const char* start;
  const char* name = "";  // a line that tells more of its name
};

struct ReportKind {
  const char* name;                        // as rules of findings call it
  std::vector<const char*> titles = {};    // as they stand, or up to a "*"
  std::vector<const char*> headings = {};  // titles under which other titles follow at once
  std::vector<LayoutRule> layout = {};
  std::vector<BlockRule> blocks = {};
  bool has_end_mark = true;
  bool has_all_titles = false;      // in every report of the kind
  bool fails_with_command = false;  // a command that fails leaves a section incomplete
  bool is_output = false;           // of a command of the user's: nothing in it is looked at
};

[[nodiscard]] const ReportKind& versions_report();
[[nodiscard]] const ReportKind& system_report();
[[nodiscard]] const ReportKind& environment_report();
[[nodiscard]] const ReportKind& configuration_report();
[[nodiscard]] const ReportKind& files_report();
[[nodiscard]] const ReportKind& security_report();
[[nodiscard]] const ReportKind& validation_report();
[[nodiscard]] const ReportKind& messages_report();
[[nodiscard]] const ReportKind& netscape_report();
[[nodiscard]] const ReportKind& apache_report();
[[nodiscard]] const ReportKind& library_report();
[[nodiscard]] const ReportKind& output_report();

// All of them.
[[nodiscard]] const std::vector<const ReportKind*>& report_kinds();

}  // namespace host
