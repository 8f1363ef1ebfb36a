// What copied files and the output of captured commands tell.
#pragma once

#include <string>
#include <vector>

#include "report/finding_rules.h"
#include "report/report.h"
#include "support/folder.h"

namespace host {

struct FileFinding {
  std::string file;
  Finding finding;
};

// Looks through those of the files that some rule is about. A rule that holds many times in a file
// is told of a few times, and how often it held.
[[nodiscard]] std::vector<FileFinding> findings_in(const OutputFolder& folder,
                                                   const std::vector<std::string>& files,
                                                   const FindingRules& rules);

}  // namespace host
