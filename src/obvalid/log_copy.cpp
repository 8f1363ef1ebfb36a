// Copies of the log files of a broker, a database or the admin server.
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <span>
#include <string_view>

#include "commfile.h"
#include "obvalid/logs.h"
#include "obvalid/obvalid.h"
#include "sit/situtil.h"
#include "situtil/copy.h"
#include "situtil/path.h"

const AdmSrvLogName AdmSrvLogs[SIT_ADMSRV_LOGS] = {"adminsrv.log",   "AdminSrvConsole.log",
                                                   "cmdhandler.log", "faults.log",
                                                   "general.log",    "asv0.exp"};

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
  sit::Path target;
  if (!sit::compose(target, "The path", {directory, "/", sit::base_name(log_file)})) return false;
  const int result =
      sit::copy_end_of_file(log_file, target.c_str(), true, sit::Existing::kTruncate, log_file);
  if (result == 0) {
    sit::log_if_outside(log_file, home);
  } else if (result == ENOENT) {
    sit::log_computed(words.missing, log_file);
  } else {
    sit::log_computed(words.failed, log_file, result);
  }
  return result == 0;
}

// A name with a slash could lead out of the directory that it is made in.
int make_directory(const char* path, std::string_view name) noexcept {
  constexpr mode_t kReadableByAll = 0755;
  if (name.find('/') == std::string_view::npos) return ::mkdir(path, kReadableByAll);
  errno = EINVAL;
  return -1;
}

bool make_database_directory(std::string_view destination, const char* name,
                             sit::Path& directory) noexcept {
  if (!sit::compose(directory, "The path", {destination, "/", name})) return false;
  if (make_directory(directory.c_str(), name) == 0) return true;
  LogMsg("ERROR: Cannot create directory %s for database instance %s, errno = %d.\n",
         directory.c_str(), name, errno);
  return false;
}

// Where one would look for the files of a version; null when it is not installed.
const char* home_of(const char* version) noexcept {
  const PHMVER* record = sit::find_plain_installation(version);
  return record == nullptr ? nullptr : record->dir;
}

int copy_admin_server_logs(const char* version, const char* destination) noexcept {
  if (FindAdminServer(version) == 0) return SIT_NO_ADMIN_SERVER;
  const sit::WorkDirectory directory{GetAdmSrvWrkDir(version)};
  if (directory == nullptr) return SIT_NO_ADMIN_DIRECTORY;
  if (directory.get() != std::getenv("WRKDIR")) {
    sit::log_if_outside(directory.get(), home_of(version));
  }
  return CopyAdmSrvLogs(version, directory.get(), destination);
}

int copy_noted_logs(std::string_view name, const char* version, std::string_view destination,
                    bool only_databases) noexcept {
  const char* home = home_of(version);
  bool has_copied = false;
  bool has_skipped = false;
  for (const LogEntry& entry : sit::noted_logs()) {
    const bool is_database = entry.type == LT_DATABASE;
    if (!sit::is_log_of(entry, version, name) || (only_databases && !is_database)) continue;
    if (is_database && has_copied) {
      has_skipped = true;
      continue;
    }
    sit::Path directory;
    if (is_database && !make_database_directory(destination, entry.name, directory)) continue;
    static_cast<void>(
        copy_log(entry.logFile, home, is_database ? directory.view() : destination, kNotedLog));
    has_copied = true;
  }
  if (!has_copied) return kNothingNoted;
  return has_skipped ? SIT_DATABASE_LEFT_OUT : SIT_OK;
}

}  // namespace

extern "C" {

int Copy_File(const char* source, const char* destination, int trim) noexcept {
  return CopyEndOfFile(source, destination, trim, 0);
}

int Copy_Log_Files(const char* name, const char* version, const char* destination) noexcept {
  constexpr std::string_view kDatabase = "db:";
  if (name == nullptr || version == nullptr || destination == nullptr) return SIT_FAILED;
  if (sit::equal_ignoring_case(name, "admsrv")) return copy_admin_server_logs(version, destination);
  const bool is_database = sit::starts_ignoring_case(name, kDatabase);
  return copy_noted_logs(sit::tail(name, is_database ? kDatabase.size() : 0), version, destination,
                         is_database);
}

int CopyAdmSrvLogs(const char* /*version*/, const char* directory,
                   const char* destination) noexcept {
  bool has_copied = false;
  if (directory == nullptr || destination == nullptr) return SIT_NO_ADMIN_LOGS;
  for (const AdmSrvLogName& name : AdmSrvLogs) {
    sit::Path log_file;
    if (sit::compose(log_file, "The path", {directory, "/", name}) &&
        copy_log(log_file.c_str(), directory, destination, kAdminLog)) {
      has_copied = true;
    }
  }
  return has_copied ? SIT_OK : SIT_NO_ADMIN_LOGS;
}

}  // extern "C"
