#include "diff/noise.h"

#include <algorithm>
#include <filesystem>

#include "support/data_file.h"

namespace host {
namespace {

bool are_same(const Rule& rule, const NoiseRule& noise, const std::string& example) {
  auto [left, right] = rule.parts_of(example);
  Noise alone;
  alone.add(&noise);
  const bool counts = alone.reduce(left);
  return counts == alone.reduce(right) && (!counts || left == right);
}

NoiseRule noise_rule_of(const Rule& rule) {
  NoiseRule noise{.file = rule.pattern("file"),
                  .section = rule.pattern_if_any("section"),
                  .replace = rule.pattern_if_any("replace"),
                  .by = rule.text_or("by", "~"),
                  .drop = rule.pattern_if_any("drop"),
                  .is_unordered = rule.flag("unordered"),
                  .is_ignored = rule.flag("ignore")};
  std::string wrong;
  if (noise.replace != nullptr && !noise.replace->CheckRewriteString(noise.by, &wrong)) {
    rule.fail("\"by\": " + wrong);
  }
  const bool has_lines = noise.replace != nullptr || noise.drop != nullptr;
  if (has_lines && rule.texts("same").empty()) rule.fail("lacks \"same\", its examples");
  for (const std::string& example : rule.texts("same")) {
    if (!are_same(rule, noise, example)) rule.fail("finds a difference in its example " + example);
  }
  for (const std::string& example : rule.texts("different")) {
    if (are_same(rule, noise, example)) rule.fail("finds no difference in its example " + example);
  }
  return noise;
}

}  // namespace

bool Noise::reduce(std::string& line) const {
  for (const NoiseRule* rule : rules_) {
    if (rule->drop != nullptr && RE2::PartialMatch(line, *rule->drop)) return false;
    if (rule->replace != nullptr) RE2::GlobalReplace(&line, *rule->replace, rule->by);
  }
  return true;
}

bool Noise::is_unordered() const {
  return std::ranges::any_of(rules_, [](const NoiseRule* rule) { return rule->is_unordered; });
}

bool Noise::is_ignored() const {
  return std::ranges::any_of(rules_, [](const NoiseRule* rule) { return rule->is_ignored; });
}

NoiseRules NoiseRules::load(const std::string& name, const std::string& folder,
                            const std::vector<std::string>& more) {
  NoiseRules all;
  for (const std::filesystem::path& path : data_files(name, folder, more)) {
    RuleFile(path, "rules", {"noise"})
        .each("noise",
              {"name", "file", "section", "replace", "by", "drop", "unordered", "ignore", "same",
               "different"},
              [&all](const Rule& rule) { all.rules_.push_back(noise_rule_of(rule)); });
  }
  return all;
}

Noise NoiseRules::of(const std::string& file, const std::string& section) const {
  Noise noise;
  for (const NoiseRule& rule : rules_) {
    const bool is_meant = RE2::PartialMatch(file, *rule.file) &&
                          (rule.section == nullptr || RE2::PartialMatch(section, *rule.section));
    if (is_meant) noise.add(&rule);
  }
  return noise;
}

}  // namespace host
