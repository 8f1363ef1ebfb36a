#include "steps/captures.h"

#include <CLI/CLI.hpp>
#include <filesystem>

#include "support/data_file.h"
#include "support/names.h"
#include "support/processes.h"
#include "support/rule_file.h"

namespace host {
namespace {

// A size as the command line takes it, "4MiB"; nothing where none is given.
std::uint64_t size_of(const Rule& rule, const char* field) {
  std::string size = rule.text_or(field, "0");
  try {
    static_cast<void>(CLI::AsSizeValue(false)(size));
    return std::stoull(size);
  } catch (const std::exception&) {
    rule.fail(std::string("\"") + field + "\": " + rule.text(field) + " is no size");
  }
}

ExtraCapture capture_of(const Rule& rule) {
  constexpr std::size_t kLongestCommand = 509;  // that the plug-in takes
  constexpr double kLongestLimit = 59;
  ExtraCapture capture{.name = rule.text("name"),
                       .title = rule.text("title"),
                       .command = rule.text("command"),
                       .limit = rule.number_or("limit", 0),
                       .cap = size_of(rule, "cap"),
                       .needs_root = rule.flag("needs-root")};
  capture.tool = rule.text_or("tool", program_of(capture.command));
  if (safe_name(capture.name) != capture.name) rule.fail("its name cannot be that of a file");
  if (capture.command.empty() || capture.command.size() > kLongestCommand) {
    rule.fail("its command must have 1 to " + std::to_string(kLongestCommand) + " characters");
  }
  if (!(capture.limit >= 0 && capture.limit <= kLongestLimit)) {
    rule.fail("\"limit\" is no number of seconds up to 59");
  }
  return capture;
}

}  // namespace

std::vector<ExtraCapture> load_captures(bool with_usual, const std::vector<std::string>& more) {
  std::vector<std::filesystem::path> files(more.begin(), more.end());
  if (with_usual) files = data_files("capture.yaml", "capture.d", more);
  std::vector<ExtraCapture> captures;
  for (const std::filesystem::path& path : files) {
    RuleFile(path, "captures", {"captures"})
        .each("captures", {"name", "title", "command", "tool", "limit", "cap", "needs-root"},
              [&captures](const Rule& rule) { replace_or_add(captures, capture_of(rule)); });
  }
  return captures;
}

}  // namespace host
