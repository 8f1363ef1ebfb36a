#include "mask/rules.h"

#include "support/data_file.h"
#include "support/failure.h"

namespace host {
namespace {

constexpr std::string_view kOpening = "<<";
constexpr std::string_view kClosing = ">>";

// What the examples of a rule make of it: a rule alone must find what they say.
void check(const Rule& rule, const std::string& example, const MaskRules& alone) {
  std::string line;
  std::string marked;
  for (std::size_t i = 0; i < example.size();) {
    const std::string_view rest = std::string_view(example).substr(i);
    const bool is_mark = rest.starts_with(kOpening) || rest.starts_with(kClosing);
    if (!is_mark) line += example[i];
    i += is_mark ? kOpening.size() : 1;
  }
  std::size_t done = 0;
  for (const Secret& secret : secrets_in(line, alone)) {
    marked += line.substr(done, secret.begin - done) + std::string(kOpening) +
              line.substr(secret.begin, secret.end - secret.begin) + std::string(kClosing);
    done = secret.end;
  }
  marked += line.substr(done);
  if (marked != example) rule.fail("of its example " + example + " it makes " + marked);
}

void add_rule(const Rule& rule, MaskRules& rules) {
  MaskRules alone;
  alone.rules.push_back({.name = rule.text("name"),
                         .pattern = rule.pattern("pattern"),
                         .except = rule.pattern_if_any("except"),
                         .unless = rule.pattern_if_any("unless")});
  if (alone.rules[0].pattern->NumberOfCapturingGroups() == 0) {
    rule.fail("its pattern has no group to mask");
  }
  for (const std::string& example : rule.texts("masks")) check(rule, example, alone);
  for (const std::string& example : rule.texts("keeps")) check(rule, example, alone);
  if (rule.texts("masks").empty()) rule.fail("lacks \"masks\", its examples");
  rules.rules.push_back(std::move(alone.rules.front()));
}

void add_file(const std::filesystem::path& path, MaskRules& rules) {
  const RuleFile file(path, "mask rules", {"rules", "blocks", "binary"});
  file.each("rules", {"name", "pattern", "except", "unless", "masks", "keeps"},
            [&rules](const Rule& rule) { add_rule(rule, rules); });
  file.each("blocks", {"name", "begin", "inside", "end", "alone"}, [&rules](const Rule& rule) {
    rules.blocks.push_back({.name = rule.text("name"),
                            .begin = rule.pattern("begin"),
                            .inside = rule.pattern("inside"),
                            .end = rule.pattern("end"),
                            .alone = rule.pattern("alone")});
  });
  file.each("binary", {"name", "keep"}, [&rules](const Rule& rule) {
    for (const std::string& name : rule.texts("keep")) {
      rules.kept_binaries.push_back(rule.compile(name));
    }
  });
}

Pattern any_of(const MaskRules& rules) {
  std::string all;
  const auto add = [&all](const Pattern& pattern) {
    all += (all.empty() ? "" : "|") + pattern->pattern();
  };
  for (const MaskRule& rule : rules.rules) add(rule.pattern);
  for (const MaskBlock& block : rules.blocks) {
    add(block.begin);
    add(block.alone);
  }
  RE2::Options options = rule_options();
  constexpr std::int64_t kMemory = 16 << 20;
  options.set_max_mem(kMemory);
  options.set_never_capture(true);
  Pattern any = std::make_shared<RE2>(all, options);
  if (!any->ok()) throw UsageError("mask rules: all of them together: " + any->error());
  return any;
}

}  // namespace

MaskRules MaskRules::load(const std::vector<std::string>& more) {
  MaskRules rules;
  for (const auto& file : data_files("mask.yaml", "mask.d", more)) add_file(file, rules);
  rules.any = any_of(rules);
  return rules;
}

}  // namespace host
