#include "mask/rules.h"

#include <yaml-cpp/yaml.h>

#include "support/data_file.h"
#include "support/failure.h"

namespace host {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kOpening = "<<";
constexpr std::string_view kClosing = ">>";

RE2::Options options_of_patterns() {
  RE2::Options options(RE2::Quiet);
  options.set_encoding(RE2::Options::EncodingLatin1);  // of any bytes
  options.set_never_nl(true);
  constexpr std::int64_t kMemory = 1 << 20;  // all of them together must not need much
  options.set_max_mem(kMemory);
  return options;
}

// One file of rules, and which of them is read, for what goes wrong.
class RuleFile {
 public:
  RuleFile(const fs::path& path, MaskRules& rules) : path_(path), rules_(rules) {}

  void read() {
    YAML::Node file;
    try {
      file = YAML::LoadFile(path_.string());
    } catch (const YAML::BadFile&) {
      fail("cannot be read");
    } catch (const YAML::Exception& error) {
      fail(error.what());
    }
    try {
      if (!file.IsMap()) fail("holds no rules");
      for (const auto& node : file["rules"]) read_rule(node);
      for (const auto& node : file["blocks"]) read_block(node);
      rule_ = "binary";
      for (const auto& node : file["binary"]["keep"]) {
        rules_.kept_binaries.push_back(compile(node.as<std::string>()));
      }
    } catch (const YAML::Exception& error) {
      fail(error.what());
    }
  }

 private:
  [[noreturn]] void fail(const std::string& why) const {
    throw UsageError("mask rules " + path_.string() + (rule_.empty() ? "" : ", \"" + rule_ + "\"") +
                     ": " + why);
  }

  [[nodiscard]] Pattern compile(const std::string& text) const {
    Pattern pattern = std::make_shared<RE2>("(?m:" + text + ")", options_of_patterns());
    if (!pattern->ok()) fail("\"" + text + "\": " + pattern->error());
    return pattern;
  }
  [[nodiscard]] Pattern required(const YAML::Node& node, const char* field) const {
    if (!node[field]) fail(std::string("lacks \"") + field + "\"");
    return compile(node[field].as<std::string>());
  }
  [[nodiscard]] Pattern optional(const YAML::Node& node, const char* field) const {
    return node[field] ? compile(node[field].as<std::string>()) : nullptr;
  }
  [[nodiscard]] std::string name_of(const YAML::Node& node) {
    rule_.clear();
    if (!node.IsMap() || !node["name"]) fail("a rule lacks \"name\"");
    return rule_ = node["name"].as<std::string>();
  }

  void read_rule(const YAML::Node& node) {
    MaskRule rule{.name = name_of(node),
                  .pattern = required(node, "pattern"),
                  .except = optional(node, "except"),
                  .unless = optional(node, "unless")};
    if (rule.pattern->NumberOfCapturingGroups() == 0) fail("its pattern has no group to mask");
    // A rule alone must find what its examples say.
    MaskRules alone;
    alone.rules.push_back(std::move(rule));
    for (const auto& example : node["masks"]) check(example.as<std::string>(), alone);
    for (const auto& example : node["keeps"]) check(example.as<std::string>(), alone);
    if (!node["masks"] || node["masks"].size() == 0) fail("lacks \"masks\", its examples");
    rules_.rules.push_back(std::move(alone.rules.front()));
  }

  void check(const std::string& example, const MaskRules& alone) const {
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
    if (marked != example) fail("of its example " + example + " it makes " + marked);
  }

  void read_block(const YAML::Node& node) {
    rules_.blocks.push_back({.name = name_of(node),
                             .begin = required(node, "begin"),
                             .inside = required(node, "inside"),
                             .end = required(node, "end"),
                             .alone = required(node, "alone")});
  }

  fs::path path_;
  std::string rule_;
  MaskRules& rules_;
};

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
  RE2::Options options = options_of_patterns();
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
  for (const fs::path& file : data_files("mask.yaml", "mask.d", more)) RuleFile(file, rules).read();
  rules.any = any_of(rules);
  return rules;
}

}  // namespace host
