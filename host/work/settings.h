// The settings of a machine by which it may differ from others, as files of rules tell of them.
#pragma once

#include <string>
#include <vector>

#include "support/rule_file.h"

namespace host {

struct SettingRule {
  std::string name;
  std::string variable;  // of the environment; empty: the value stands in the file
  std::string file;
  Pattern pattern;  // null: the file's first line is the value
};

// Those that come with the program, then those of /etc/sit/settings.d; a later one replaces an
// earlier one of its name. Throws UsageError, naming file and setting, for one that cannot be used.
[[nodiscard]] std::vector<SettingRule> load_settings();

// Its value on this machine; empty when there is none.
[[nodiscard]] std::string value_of(const SettingRule& rule);

}  // namespace host
