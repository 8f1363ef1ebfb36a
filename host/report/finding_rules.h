// What in a report or file tells that something is missing or wrong, as files of rules say.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "report/kinds.h"
#include "support/rule_file.h"

namespace host {

struct FindingRule {
  std::string name;
  std::vector<std::string> reports;  // kinds of them; none: all
  Pattern section;                   // of its title; null: any
  Pattern files;                     // their paths; null: it is about reports
  Pattern pattern;
  Sign sign;
  std::string words;  // with {block} and {1}, the first group; empty: the line itself
};

// The rules that hold in one section.
class SectionRules {
 public:
  explicit SectionRules(std::vector<const FindingRule*> rules);

  // The first that holds for the line, and what its first group takes. Null: none.
  const FindingRule* find(const std::string& line, std::string& captured) const;

 private:
  std::vector<const FindingRule*> rules_;
  Pattern any_;  // most lines are dismissed by this one
};

class FindingRules {
 public:
  // Those that come with the program, those of /etc/sit/findings.d, and these files. Throws
  // UsageError, naming file and rule, for one that cannot be used: each must do what its examples
  // say.
  [[nodiscard]] static FindingRules load(const std::vector<std::string>& more);

  // Those for a section of this kind of report, behind those that tell of the report's layout.
  [[nodiscard]] const SectionRules& of(const ReportKind& kind, const std::string& title) const;

  // Those for files of this path.
  [[nodiscard]] std::vector<const FindingRule*> of_file(const std::string& file) const;

 private:
  std::vector<std::unique_ptr<const FindingRule>> rules_;
  std::map<const ReportKind*, std::vector<const FindingRule*>> layouts_;
  mutable std::map<std::vector<const FindingRule*>, std::unique_ptr<const SectionRules>> known_;
};

}  // namespace host
