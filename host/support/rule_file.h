// Files of rules in YAML, which those who know a product write and add to: lists of entries, each
// with a name. Whatever cannot be used is one clear line that names the file and the rule.
#pragma once

#include <re2/re2.h>
#include <yaml-cpp/yaml.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace host {

using Pattern = std::shared_ptr<const RE2>;

// Of patterns that meet any bytes, in a memory that many of them can share.
[[nodiscard]] RE2::Options rule_options();

// One entry. All that is asked of it throws UsageError where it is missing or of another kind.
class Rule {
 public:
  Rule(std::string place, const YAML::Node& node) : place_(std::move(place)), node_(node) {}

  [[nodiscard]] bool has(const char* field) const { return static_cast<bool>(node_[field]); }
  [[nodiscard]] std::string text(const char* field) const;
  [[nodiscard]] std::string text_or(const char* field, const std::string& otherwise) const;
  [[nodiscard]] double number_or(const char* field, double otherwise) const;
  [[nodiscard]] bool flag(const char* field) const;  // false where it is missing
  [[nodiscard]] std::vector<std::string> texts(
      const char* field) const;  // none where it is missing
  [[nodiscard]] Pattern pattern(const char* field) const;
  [[nodiscard]] Pattern pattern_if_any(const char* field) const;  // null where it is missing
  [[nodiscard]] Pattern compile(const std::string& text) const;

  // The two halves of an example, which " <> " parts.
  [[nodiscard]] std::pair<std::string, std::string> parts_of(const std::string& example) const;

  [[noreturn]] void fail(const std::string& why) const;

 private:
  template <typename Value>
  [[nodiscard]] Value as(const char* field) const;

  std::string place_;  // file and rule
  YAML::Node node_;
};

class RuleFile {
 public:
  // Reads the file; `what` says of what its rules are. It may hold these lists and nothing else.
  RuleFile(const std::filesystem::path& path, const std::string& what,
           std::initializer_list<const char*> lists);

  // Hands out the entries of a list. They may have these fields and no other; each has a name.
  void each(const char* list, std::initializer_list<const char*> fields,
            const std::function<void(const Rule& rule)>& take) const;

 private:
  [[noreturn]] void fail(const std::string& why) const;

  std::string place_;
  YAML::Node file_;
};

// Takes it among the entries, in the place of one of its name.
template <typename Entry>
void replace_or_add(std::vector<Entry>& entries, Entry entry) {
  for (Entry& known : entries) {
    if (known.name == entry.name) return void(known = std::move(entry));
  }
  entries.push_back(std::move(entry));
}

}  // namespace host
