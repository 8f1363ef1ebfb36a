// Copies of the log files of a broker, a database or the admin server.
#include <sys/stat.h>

#include <cerrno>
#include <span>
#include <string_view>

#include "commfile.h"
#include "commutils/views.h"
#include "obvalid/admin_server.h"
#include "obvalid/log_table.h"
#include "obvalid/obvalid.h"
#include "obvalid/properties.h"
#include "situtil/copy.h"
#include "situtil/path.h"

namespace sit::obvalid {
namespace {

constexpr int kNothingNoted = 1;

// What the report says of a log that could not be copied.
struct CopyWords {
  const char* missing;  // takes the log
  const char* failed;   // takes the log and the result
};
constexpr CopyWords kNotedLog{"Cannot find %s. Skipping file copy.\n",
                              "ERROR: Cannot copy file %s, ret = %d\n"};
constexpr CopyWords kAdminLog{"Can't find %s... Skipping file copy\n",
                              "Could not copy %s, ret = %d\n"};

// Copies the end of a log into a directory, under its own name, and says so when it does not come
// from its home.
bool copy_log(const char* log_file, const char* home, std::string_view directory,
              const CopyWords& words) noexcept {
  Path target;
  if (!compose_path(target, {directory, "/", base_name(log_file)})) return false;
  const int result = copy_end_of_file(
      {.source = log_file, .destination = target.c_str(), .trims = true, .tells = true});
  if (result == 0) {
    log_if_outside(log_file, home);
  } else if (result == ENOENT) {
    log_computed(words.missing, log_file);
  } else {
    log_computed(words.failed, log_file, result);
  }
  return result == 0;
}

// A name with a slash could lead out of the directory that it is made in.
int make_directory(const char* path, std::string_view name) noexcept {
  constexpr mode_t kReadableByAll = 0755;
  if (!contains(name, "/")) return ::mkdir(path, kReadableByAll);
  errno = EINVAL;
  return -1;
}

bool make_database_directory(std::string_view destination, const char* name,
                             Path& directory) noexcept {
  if (!compose_path(directory, {destination, "/", name})) return false;
  if (make_directory(directory.c_str(), name) == 0) return true;
  log("ERROR: Cannot create directory %s for database instance %s, errno = %d.\n",
      directory.c_str(), name, errno);
  return false;
}

// Where one would look for the files of a version; null when it is not installed.
const char* home_of(const char* version) noexcept {
  const PHMVER* record = find_plain_installation(version);
  return record == nullptr ? nullptr : record->dir;
}

int copy_admin_server_logs(const char* version, const char* destination) noexcept {
  if (!has_admin_server(version)) return SIT_NO_ADMIN_SERVER;
  const WorkDirectory directory = find_work_directory(version);
  if (!directory.is_known()) return SIT_NO_ADMIN_DIRECTORY;
  if (directory.given == nullptr) log_if_outside(directory.c_str(), home_of(version));
  return copy_admin_server_logs_from(directory.c_str(), destination);
}

int copy_noted_logs(std::string_view name, const char* version, std::string_view destination,
                    bool only_databases) noexcept {
  const char* home = home_of(version);
  bool has_copied = false;
  bool has_skipped = false;
  for (const LogEntry& entry : noted_logs()) {
    const bool is_database = entry.type == LT_DATABASE;
    if (!is_log_of(entry, version, name) || (only_databases && !is_database)) continue;
    if (is_database && has_copied) {
      has_skipped = true;
      continue;
    }
    Path directory;
    if (is_database && !make_database_directory(destination, entry.name, directory)) continue;
    static_cast<void>(
        copy_log(entry.logFile, home, is_database ? directory.view() : destination, kNotedLog));
    has_copied = true;
  }
  if (!has_copied) return kNothingNoted;
  return has_skipped ? SIT_DATABASE_LEFT_OUT : SIT_OK;
}

}  // namespace

int copy_logs(std::string_view name, const char* version, const char* destination) noexcept {
  constexpr std::string_view kDatabase = "db:";
  if (equal_ignoring_case(name, "admsrv")) return copy_admin_server_logs(version, destination);
  const bool is_database = starts_ignoring_case(name, kDatabase);
  return copy_noted_logs(tail(name, is_database ? kDatabase.size() : 0), version, destination,
                         is_database);
}

int copy_admin_server_logs_from(const char* directory, const char* destination) noexcept {
  bool has_copied = false;
  for (const AdmSrvLogName& name : std::span{AdmSrvLogs, SIT_ADMSRV_LOGS}) {
    Path log_file;
    if (compose_path(log_file, {directory, "/", name}) &&
        copy_log(log_file.c_str(), directory, destination, kAdminLog)) {
      has_copied = true;
    }
  }
  return has_copied ? SIT_OK : SIT_NO_ADMIN_LOGS;
}

}  // namespace sit::obvalid
