#include "obvalid/log_table.h"

#include <algorithm>
#include <utility>

#include "commfile.h"
#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "obvalid/obvalid.h"
#include "session.h"
#include "situtil/lines.h"
#include "situtil/path.h"

namespace sit::obvalid {
namespace {

// Whether the report knows that the table is full.
constinit bool full_is_said = false;

void log_full_table() noexcept {
  if (!is_verbose() || std::exchange(full_is_said, true)) return;
  log_verbose("The log table is full: further log files are not noted\n");
}

void note(int type, const char* version, std::string_view name,
          std::string_view log_file) noexcept {
  const auto noted = noted_logs();
  const bool is_known = std::ranges::any_of(noted, [&](const LogEntry& entry) {
    return entry.type == type && is_log_of(entry, version, name);
  });
  if (is_known) return;
  if (noted.size() == SIT_LOGS) {
    log_full_table();
    return;
  }
  HeapText own_version = version == nullptr ? nullptr : duplicate(version);
  HeapText own_name = duplicate(name);
  HeapText own_log_file = duplicate(log_file);
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
    if (starts_ignoring_case(line, kSection)) open_section(tail(line, kSection.size()));
    if (contains(line, kDatabase) && !name_.empty()) {
      note_log(tail(line, line.find('=') + 1));
      name_ = LineText{};
    }
  }

 private:
  void open_section(std::string_view rest) noexcept {
    const std::size_t end = rest.find(']');
    if (end != std::string_view::npos) name_ = line_text(head(rest, end));
  }

  // The log of a database stands beside it, with ".lg" in the place of ".db".
  void note_log(std::string_view database) const noexcept {
    const std::size_t ending = database.find(".db");
    if (database.ends_with('\n')) database.remove_suffix(1);
    Path log_file;
    if (compose_path(log_file, {head(database, ending), ".lg"})) {
      note(LT_DATABASE, version_, name_.view(), log_file.view());
    }
  }

  const char* version_;
  LineText name_;  // of the section being read, empty once its log is noted
};

}  // namespace

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

void note_log(std::string_view line, const char* version, std::string_view name) noexcept {
  constexpr std::pair<int, std::string_view> kKeys[] = {
      {LT_SERVER, "srvrLogFile"}, {LT_BROKER, "brokerLogFile"}, {LT_LOG, "logFile"}};
  for (const auto& [type, key] : kKeys) {
    LineText value;
    if (read_value(line, key, value) == SIT_OK) {
      note(type, version, name, value.view());
      break;
    }
  }
}

void note_database_logs(const char* path, const char* version) noexcept {
  LineReader reader{path};
  Databases databases{version};
  for (Line line; reader.next(line);) databases.take(line.text());
}

int list_logs() noexcept {
  log_verbose("\n\n");
  for (const LogEntry& entry : noted_logs()) {
    log_verbose("Version %s  type %d  name=%s", entry.version == nullptr ? "NULL" : entry.version,
                entry.type, entry.name);
    log(entry.type == LT_BROKER ? " brkrlogfile= %s\n" : " srvrlogFile= %s\n", entry.logFile);
  }
  return log_verbose("\n\n");
}

}  // namespace sit::obvalid
