#include "report/finding_rules.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "support/data_file.h"

namespace host {
namespace {

struct Severity {
  const char* name;
  Sign sign;
};
constexpr Severity kSeverities[] = {{"lost", Sign::kLost},        {"failed", Sign::kFailed},
                                    {"incomplete", Sign::kError}, {"wrong", Sign::kWrong},
                                    {"ends", Sign::kEnds},        {"not here", Sign::kNotHere}};

Sign sign_of(const Rule& rule) {
  const std::string given = rule.text("severity");
  std::string all;
  for (const auto& [name, sign] : kSeverities) {
    if (given == name) return sign;
    all += (all.empty() ? "" : ", ") + std::string(name);
  }
  rule.fail("\"severity\" is one of " + all);
}

void check_reports(const Rule& rule, const std::vector<std::string>& reports) {
  for (const std::string& report : reports) {
    const bool is_known = std::ranges::any_of(
        report_kinds(), [&report](const ReportKind* kind) { return report == kind->name; });
    if (!is_known) rule.fail("there is no report \"" + report + "\"");
  }
}

FindingRule finding_rule_of(const Rule& rule) {
  FindingRule made{.name = rule.text("name"),
                   .reports = rule.texts("reports"),
                   .section = rule.pattern_if_any("section"),
                   .files = rule.pattern_if_any("files"),
                   .pattern = rule.pattern("pattern"),
                   .sign = sign_of(rule),
                   .words = rule.text_or("words", "")};
  check_reports(rule, made.reports);
  const bool is_of_reports = !made.reports.empty() || made.section != nullptr;
  if (made.files != nullptr && is_of_reports) rule.fail("is about either reports or files");
  if (made.files != nullptr && made.sign == Sign::kEnds) rule.fail("only a report tells of days");
  if (rule.texts("matches").empty()) rule.fail("lacks \"matches\", its examples");
  for (const std::string& line : rule.texts("matches")) {
    if (!RE2::PartialMatch(line, *made.pattern)) rule.fail("does not match its example " + line);
  }
  for (const std::string& line : rule.texts("misses")) {
    if (RE2::PartialMatch(line, *made.pattern)) rule.fail("matches its example " + line);
  }
  return made;
}

bool is_for(const FindingRule& rule, const ReportKind& kind) {
  return rule.files == nullptr &&
         (rule.reports.empty() || std::ranges::count(rule.reports, std::string(kind.name)) > 0);
}

}  // namespace

SectionRules::SectionRules(std::vector<const FindingRule*> rules) : rules_(std::move(rules)) {
  std::string all;
  for (const FindingRule* rule : rules_) {
    all += (all.empty() ? "" : "|") + rule->pattern->pattern();
  }
  RE2::Options options = rule_options();
  options.set_never_capture(true);
  if (!rules_.empty()) any_ = std::make_shared<RE2>(all, options);
}

const FindingRule* SectionRules::find(const std::string& line, std::string& captured) const {
  // One that could not be compiled, for its size, dismisses nothing.
  if (rules_.empty() || (any_->ok() && !RE2::PartialMatch(line, *any_))) return nullptr;
  for (const FindingRule* rule : rules_) {
    const bool has_group = rule->pattern->NumberOfCapturingGroups() > 0;
    captured.clear();
    if (has_group ? RE2::PartialMatch(line, *rule->pattern, &captured)
                  : RE2::PartialMatch(line, *rule->pattern)) {
      return rule;
    }
  }
  return nullptr;
}

FindingRules FindingRules::load(const std::vector<std::string>& more) {
  FindingRules all;
  const auto keep = [&all](FindingRule rule) {
    return all.rules_.emplace_back(std::make_unique<const FindingRule>(std::move(rule))).get();
  };
  for (const ReportKind* kind : report_kinds()) {
    for (const LayoutRule& rule : kind->layout) {
      all.layouts_[kind].push_back(
          keep({.name = {},
                .reports = {kind->name},
                .section = nullptr,
                .files = nullptr,
                .pattern = std::make_shared<RE2>(rule.pattern, rule_options()),
                .sign = rule.sign,
                .words = {}}));
    }
  }
  for (const std::filesystem::path& path : data_files("findings.yaml", "findings.d", more)) {
    RuleFile(path, "findings", {"findings"})
        .each("findings",
              {"name", "reports", "section", "files", "pattern", "severity", "words", "matches",
               "misses"},
              [&keep](const Rule& rule) { keep(finding_rule_of(rule)); });
  }
  return all;
}

const SectionRules& FindingRules::of(const ReportKind& kind, const std::string& title) const {
  std::vector<const FindingRule*> chosen;
  const auto layout = layouts_.find(&kind);
  if (layout != layouts_.end()) chosen = layout->second;
  for (const auto& rule : rules_) {
    if (rule->name.empty() || !is_for(*rule, kind)) continue;
    if (rule->section != nullptr && !RE2::PartialMatch(title, *rule->section)) continue;
    chosen.push_back(rule.get());
  }
  auto& made = known_[chosen];
  if (made == nullptr) made = std::make_unique<const SectionRules>(chosen);
  return *made;
}

std::vector<const FindingRule*> FindingRules::of_file(const std::string& file) const {
  std::vector<const FindingRule*> chosen;
  for (const auto& rule : rules_) {
    if (rule->files != nullptr && RE2::PartialMatch(file, *rule->files))
      chosen.push_back(rule.get());
  }
  return chosen;
}

}  // namespace host
