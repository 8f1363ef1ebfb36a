#include "work/settings.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>

#include "support/data_file.h"
#include "support/descriptor.h"
#include "support/lines.h"

namespace host {
namespace {

constexpr std::uint64_t kMostBytes = 1 << 20;  // of a file
constexpr std::size_t kLongest = 200;          // bytes of a value

std::string value_in(const std::string& line, const Pattern& pattern) {
  std::string value = line;
  if (pattern != nullptr && !RE2::PartialMatch(line, *pattern, &value)) return "";
  std::ranges::replace(value, '\t', ' ');
  return value.substr(0, kLongest);
}

SettingRule setting_of(const Rule& rule) {
  SettingRule setting{.name = rule.text("name"),
                      .variable = rule.text_or("variable", ""),
                      .file = rule.text_or("file", ""),
                      .pattern = rule.pattern_if_any("pattern")};
  if (setting.variable.empty() == setting.file.empty()) {
    rule.fail("needs a \"variable\" or a \"file\", and not both");
  }
  if (setting.pattern == nullptr) return setting;
  if (setting.pattern->NumberOfCapturingGroups() != 1)
    rule.fail("its pattern must have one group, the value");
  if (rule.texts("reads").empty()) rule.fail("lacks \"reads\", its examples");
  for (const std::string& example : rule.texts("reads")) {
    const auto [line, value] = rule.parts_of(example);
    if (value_in(line, setting.pattern) != value) rule.fail("reads otherwise: " + example);
  }
  return setting;
}

// The kernel's are plain files, too; anything else might never come to its end.
Descriptor open_plain(const std::string& file) {
  Descriptor opened(::open(file.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat status {};
  if (::fstat(opened.get(), &status) != 0 || !S_ISREG(status.st_mode)) opened.reset();
  return opened;
}

}  // namespace

std::vector<SettingRule> load_settings() {
  std::vector<SettingRule> settings;
  for (const std::filesystem::path& path : data_files("settings.yaml", "settings.d", {})) {
    RuleFile(path, "settings", {"settings"})
        .each("settings", {"name", "variable", "file", "pattern", "reads"},
              [&settings](const Rule& rule) { replace_or_add(settings, setting_of(rule)); });
  }
  return settings;
}

std::string value_of(const SettingRule& rule) {
  if (!rule.variable.empty()) {
    const char* value = std::getenv(rule.variable.c_str());
    return value == nullptr ? "" : value_in(value, rule.pattern);
  }
  std::string value;
  Lines lines([&](std::string_view line, std::uint64_t /*number*/) {
    value = value_in(std::string(line), rule.pattern);
    return value.empty() && rule.pattern != nullptr;
  });
  lines.read(open_plain(rule.file).get(), kMostBytes);
  return value;
}

}  // namespace host
