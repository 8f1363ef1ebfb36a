// What one would write by hand instead of GetSysInfo.
#pragma once

#include <string>
#include <utility>

#include "sit/usysinfo.h"

namespace bench {

// The commands of GetSysInfo one after another: of each list, those up to the first success.
inline std::string system_script(const std::string& output) {
  const std::pair<const char**, int> lists[] = {
      {MACHLST, 5}, {ULIMITLST, 4}, {SWAPLST, 7}, {MNTLST, 4},  {DSKLST, 3}, {SYSTABLST, 2},
      {KNLLST, 10}, {SEMLST, 2},    {SHMLST, 2},  {PROCLST, 5}, {NETLST, 4}, {PRDLST, 6}};
  std::string script = "exec > " + output + " 2>&1\ncat /etc/*-release\n";
  for (const auto& [list, limit] : lists) {
    for (int i = 0; i < limit && list[i] != nullptr; ++i) {
      if (i > 0) script += " || ";
      script += "sh -c '" + std::string(list[i]) + "'";
    }
    script += "\n";
  }
  return script;
}

}  // namespace bench
