// What differs from one collection to the next without a meaning, as files of rules say.
#pragma once

#include <string>
#include <vector>

#include "support/rule_file.h"

namespace host {

// What a rule says of the lines of some sections.
struct NoiseRule {
  Pattern file;
  Pattern section;  // null: any
  Pattern replace;  // null: nothing
  std::string by;
  Pattern drop;  // lines that do not count; null: none
  bool is_unordered = false;
  bool is_ignored = false;
};

// The rules for one section.
class Noise {
 public:
  void add(const NoiseRule* rule) { rules_.push_back(rule); }

  // The line as it is compared; false when it does not count.
  [[nodiscard]] bool reduce(std::string& line) const;

  [[nodiscard]] bool is_unordered() const;
  [[nodiscard]] bool is_ignored() const;

 private:
  std::vector<const NoiseRule*> rules_;
};

class NoiseRules {
 public:
  // Those that come with the program in the file of this name, those of /etc/sit/`folder`, and
  // these files. Throws UsageError, naming file and rule, for one that cannot be used: each must do
  // what its examples say.
  [[nodiscard]] static NoiseRules load(const std::string& name, const std::string& folder,
                                       const std::vector<std::string>& more);

  [[nodiscard]] Noise of(const std::string& file, const std::string& section) const;

 private:
  std::vector<NoiseRule> rules_;
};

}  // namespace host
