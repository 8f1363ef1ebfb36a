// The log table: what check tools and the connection manager's properties tell of log files.
#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "commfile.h"
#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "obvalid/logs.h"
#include "session.h"
#include "sit/commutils.h"
#include "situtil/lines.h"
#include "situtil/path.h"

// One record more than is ever used: a full table, too, ends with a record without a name.
constinit LogEntry logs[SIT_LOGS + 1] = {};

namespace {

constexpr int kNotKept = 1;

std::optional<std::string_view> find_value(std::string_view line, std::string_view key) noexcept {
  constexpr std::size_t kSeparatorLength = 2;
  if (!line.starts_with(key)) return std::nullopt;
  const std::string_view before = sit::head(line, line.find(')'));
  const std::size_t parenthesis = before.rfind('(');
  if (before.size() < line.size() && parenthesis != std::string_view::npos) {
    return sit::tail(before, parenthesis + 1);
  }
  return sit::tail(line, key.size() + kSeparatorLength);
}

// Whether the report knows that the table is full.
constinit bool full_is_said = false;

void log_full_table() noexcept {
  if (!sit::is_verbose() || std::exchange(full_is_said, true)) return;
  LogMsgV("The log table is full: further log files are not noted\n");
}

void note(int type, const char* version, std::string_view name,
          std::string_view log_file) noexcept {
  const auto noted = sit::noted_logs();
  const bool is_known = std::ranges::any_of(noted, [&](const LogEntry& entry) {
    return entry.type == type && sit::is_log_of(entry, version, name);
  });
  if (is_known) return;
  if (noted.size() == SIT_LOGS) {
    log_full_table();
    return;
  }
  sit::HeapText own_version = version == nullptr ? nullptr : sit::duplicate(version);
  sit::HeapText own_name = sit::duplicate(name);
  sit::HeapText own_log_file = sit::duplicate(log_file);
  if ((own_version == nullptr && version != nullptr) || own_name == nullptr ||
      own_log_file == nullptr) {
    return;
  }
  logs[noted.size()] = {type, own_version.release(), own_name.release(), own_log_file.release()};
}

// The connection manager's properties, of which only the databases matter here.
class Databases {
 public:
  explicit Databases(const char* version) noexcept : version_(version) {}

  void take(std::string_view line) noexcept {
    constexpr std::string_view kSection = "[database.";
    constexpr std::string_view kDatabase = "databasename=";
    if (line.starts_with('#') || line.starts_with('%')) return;
    if (sit::starts_ignoring_case(line, kSection)) open_section(sit::tail(line, kSection.size()));
    if (line.find(kDatabase) != std::string_view::npos && !name_.empty()) {
      note_log(sit::tail(line, line.find('=') + 1));
      name_ = sit::LineText{};
    }
  }

 private:
  void open_section(std::string_view rest) noexcept {
    const std::size_t end = rest.find(']');
    if (end != std::string_view::npos) name_ = sit::line_text(sit::head(rest, end));
  }

  // The log of a database stands beside it, with ".lg" in the place of ".db".
  void note_log(std::string_view database) const noexcept {
    const std::size_t ending = database.find(".db");
    if (database.ends_with('\n')) database.remove_suffix(1);
    sit::Path log_file;
    if (sit::compose(log_file, "The path", {sit::head(database, ending), ".lg"})) {
      note(LT_DATABASE, version_, name_.view(), log_file.view());
    }
  }

  const char* version_;
  sit::LineText name_;  // of the section being read, empty once its log is noted
};

}  // namespace

namespace sit {

std::span<const LogEntry> noted_logs() noexcept {
  const std::span<const LogEntry> all{logs, SIT_LOGS};
  const auto end = std::ranges::find(all, nullptr, &LogEntry::name);
  return {all.begin(), end};
}

bool is_log_of(const LogEntry& entry, const char* version, std::string_view name) noexcept {
  return equal_ignoring_case(text_of(entry.name), name) &&
         (entry.version == nullptr) == (version == nullptr) &&
         equal_ignoring_case(text_of(entry.version), text_of(version));
}

}  // namespace sit

extern "C" {

int ReadPropertyValue_From_Validation(const char* line, const char* key, char* output) noexcept {
  if (line == nullptr || key == nullptr || output == nullptr) return SIT_FAILED;
  const auto found = find_value(line, key);
  if (!found) return SIT_FAILED;
  const sit::HeapText copy = sit::duplicate(*found);
  const sit::HeapText trimmed{StringTrim(copy.get())};
  sit::LineText value;
  if (trimmed == nullptr || !sit::compose(value, "The value", {trimmed.get()})) return kNotKept;
  stcopy(output, value.c_str());
  return SIT_OK;
}

int Populate_Logs_Table(const char* line, const char* version, const char* name) noexcept {
  constexpr std::pair<int, const char*> kKeys[] = {
      {LT_SERVER, "srvrLogFile"}, {LT_BROKER, "brokerLogFile"}, {LT_LOG, "logFile"}};
  for (const auto& [type, key] : kKeys) {
    char value[sit::LineText::kMaxLength + 1];
    if (ReadPropertyValue_From_Validation(line, key, value) == SIT_OK) {
      note(type, version, sit::text_of(name), value);
      break;
    }
  }
  return 0;
}

int Populate_Logs_Table_ConMgr(const char* path, const char* version) noexcept {
  sit::LineReader reader{path};
  Databases databases{version};
  for (sit::Line line; reader.next(line);) databases.take(line.text());
  return 0;
}

int List_log_table() noexcept {
  LogMsgV("\n\n");
  for (const LogEntry& entry : sit::noted_logs()) {
    LogMsgV("Version %s  type %d  name=%s", entry.version == nullptr ? "NULL" : entry.version,
            entry.type, entry.name);
    LogMsg(entry.type == LT_BROKER ? " brkrlogfile= %s\n" : " srvrlogFile= %s\n", entry.logFile);
  }
  return LogMsgV("\n\n");
}

}  // extern "C"
