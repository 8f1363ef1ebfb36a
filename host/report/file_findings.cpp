#include "report/file_findings.h"

#include <map>

#include "support/lines.h"
#include "support/text.h"

namespace host {
namespace {

constexpr std::size_t kMostOfARule = 3;  // that are told, in a file

// What one rule has found in one file.
struct Found {
  std::size_t count = 0;
  std::size_t last_line = 0;
};

void look_through(const std::string& file, int fd, const SectionRules& rules,
                  std::vector<FileFinding>& findings) {
  std::map<const FindingRule*, Found> found;
  Lines lines([&](std::string_view line, std::uint64_t number) {
    std::string captured;
    const std::string text(line);
    const FindingRule* rule = rules.find(text, captured);
    if (rule == nullptr) return true;
    Found& so_far = found[rule];
    so_far.last_line = number;
    if (++so_far.count <= kMostOfARule) {
      findings.push_back({file, {number, rule->sign, words_of(*rule, text, captured)}});
    }
    return true;
  });
  lines.read(fd);
  for (const auto& [rule, so_far] : found) {
    if (so_far.count <= kMostOfARule) continue;
    findings.push_back({file,
                        {so_far.last_line, rule->sign,
                         rule->name + ": " + std::to_string(so_far.count) +
                             " lines of this file tell of it, the last one here"}});
  }
}

}  // namespace

std::vector<FileFinding> findings_in(const OutputFolder& folder,
                                     const std::vector<std::string>& files,
                                     const FindingRules& rules) {
  std::vector<FileFinding> findings;
  for (const std::string& file : files) {
    const std::vector<const FindingRule*> chosen = rules.of_file(file);
    if (chosen.empty()) continue;
    const Descriptor opened = folder.open(file);
    if (opened.is_open()) look_through(file, opened.get(), SectionRules(chosen), findings);
  }
  return findings;
}

}  // namespace host
