#include "result/manifest.h"

#include <array>
#include <nlohmann/json.hpp>

namespace host {
namespace {

using nlohmann::ordered_json;
using Json = ordered_json;

std::string time_text(std::time_t time) {
  std::tm utc{};
  ::gmtime_r(&time, &utc);
  std::array<char, 32> text{};
  static_cast<void>(std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &utc));
  return text.data();
}

Json sections_of(const Row& row) {
  Json sections = Json::array();
  if (row.report == nullptr || row.bytes == 0) return sections;
  for (const Section& section : row.report->sections()) {
    const bool is_nothing = section.title.empty() && section.content == 0;
    if (is_nothing && section.outcome == SectionOutcome::kOk) continue;
    sections.push_back({{"title", section.title},
                        {"line", section.line},
                        {"outcome", text_of(section.outcome)},
                        {"why", section.why}});
  }
  return sections;
}

Json row_of(const Row& row, Detail detail) {
  Json json{{"id", row.step.id},
            {"title", row.step.title},
            {"call", row.step.kind->call},
            {"file", row.step.file},
            {"outcome", text_of(row.outcome)},
            {"code", row.code ? Json(*row.code) : Json()},
            {"why", row.why},
            {"seconds", row.seconds},
            {"bytes", row.bytes}};
  if (is_capture(row.step) && row.exit_of_first) json["exit"] = *row.exit_of_first;
  if (detail != Detail::kRowsOnly) json["sections"] = sections_of(row);
  return json;
}

// The rules are to see whose value it is. A mask stays what it is.
void mask_settings(Json& settings, Masker& masker) {
  for (const auto& [name, value] : settings.items()) {
    const std::string bare = value.is_string() ? value.get<std::string>() : "";
    if (bare.empty() || bare.starts_with("[masked ")) continue;
    const std::string start = name + "=";
    const std::string line = masker.masked(start + bare);
    value = line.starts_with(start) ? line.substr(start.size()) : line;
  }
}

}  // namespace

void mask_texts(ordered_json& json, Masker& masker) {
  if (json.is_string()) {
    json = masker.masked(json.get<std::string>());
  } else if (json.is_structured()) {
    if (json.is_object() && json.contains("settings")) mask_settings(json["settings"], masker);
    for (auto& part : json) mask_texts(part, masker);
  }
}

nlohmann::ordered_json masks_of(const Masking& masking) {
  Json masks = Json::array();
  for (const auto& [rule, count] : masking.counts) {
    masks.push_back({{"rule", rule}, {"count", count}});
  }
  return masks;
}

std::string manifest_of(const Collection& collection, const std::vector<Problem>& problems,
                        Detail detail) {
  Json json{{"format", 1},
            {"tool", collection.tool_version},
            {"plugin", collection.plugin_version},
            {"host", collection.host},
            {"user", collection.user},
            {"label", collection.label},
            {"started", time_text(collection.started)},
            {"seconds", collection.seconds},
            {"options", collection.options},
            {"root", collection.is_root},
            {"settings", collection.glance.settings},
            {"complete", collection.is_complete()},
            {"given_up", collection.given_up},
            {"rows", Json::array()},
            {"commands", Json::array()},
            {"cuts", Json::array()},
            {"problems", Json::array()}};
  for (const Row& row : collection.rows) json["rows"].push_back(row_of(row, detail));
  for (const EndedCommand& command : collection.commands) {
    json["commands"].push_back({{"command", command.command_line},
                                {"pid", command.pid},
                                {"seconds", command.seconds},
                                {"end", command.end},
                                {"row", command.row}});
  }
  for (const Cut& cut : collection.contents.cuts) {
    json["cuts"].push_back({{"file", cut.file},
                            {"bytes", cut.bytes},
                            {"left_out", cut.left_out},
                            {"meant", cut.is_meant}});
  }
  if (detail != Detail::kRowsOnly) {
    for (const Problem& problem : problems) {
      json["problems"].push_back(
          {{"text", problem.text}, {"file", problem.file}, {"line", problem.line}});
    }
  }
  json["masked"] = collection.contents.masking.is_on && collection.contents.masking.failed.empty();
  json["masks"] = masks_of(collection.contents.masking);
  if (collection.masker != nullptr) mask_texts(json, *collection.masker);
  return json.dump(detail == Detail::kReadable ? 1 : -1, ' ', false,
                   Json::error_handler_t::replace) +
         "\n";
}

}  // namespace host
