// The commands about brokers, the connection manager and the admin server.
#include <string_view>

#include "commfile.h"
#include "commutils/views.h"
#include "pelver/keys.h"
#include "session.h"
#include "sit/obvalid.h"
#include "sitexec/frame.h"

namespace {

// Releases 7 and 8 keep their brokers in another way: keys that look like theirs name nothing.
bool can_be_validated(std::string_view key) noexcept {
  return key.find("8.") == std::string_view::npos && key.find("7.") == std::string_view::npos;
}

PHMVER* find_installation(const char* version_key) noexcept {
  if (!can_be_validated(sit::text_of(version_key))) return nullptr;
  const sit::VersionKey key{version_key};
  for (PHMVER* record = pphm; record != nullptr; record = record->next) {
    if (IsCorrectProduct(record, SEL_PRODUCT) != 0 && key.is_release_of(*record) &&
        key.has_bitness_of(*record)) {
      return record;
    }
  }
  return nullptr;
}

int validate_connection_manager(PHMVER& record, const char* properties,
                                const char* destination) noexcept {
  const int result = ValidateConMgr(&record, properties, 1, destination);
  if (result != SIT_NO_DATABASE_TOOL) return result;
  LogMsg("INFORMATION: Skipping this validation (dbconfig script not found)\n");
  return SIT_OK;
}

}  // namespace

extern "C" {

int GetOBValidationInfo(const char* destination, const char* path, const char* version_key,
                        int mode, int /*ignored*/, const char* plugins_file,
                        const char* conmgr_file) noexcept {
  if (sit::is_missing(path)) return SIT_NO_REPORT_PATH;
  sit::ensure_session();
  sit::ensure_installations();
  PHMVER* record = find_installation(version_key);
  if (record == nullptr) return SIT_NO_MATCHING_INSTALLATION;

  bool failed = false;
  const auto validate = [&] {
    LogTitle("Validation of Ostrel Broker properties file");
    const int brokers = ValidateOB(record, plugins_file, nullptr, 1, destination);
    if (brokers == SIT_OK && sit::is_verbose()) List_log_table();
    LogMsg("\n\n");
    LogTitle("Validation of Connection Manager properties file");
    const int manager = validate_connection_manager(*record, conmgr_file, destination);
    failed = brokers != SIT_OK || manager != SIT_OK;
  };
  const int closed = sit::run_framed({.path = path, .mode = mode, .final = SIT_FINAL}, validate);
  return failed ? SIT_VALIDATION_FAILED : closed;
}

int OBCopyFiles(const char* path, const char* name, const char* version,
                const char* destination) noexcept {
  sit::ensure_session();
  sit::ensure_installations();
  if (name == nullptr || version == nullptr || destination == nullptr) return SIT_FAILED;
  return sit::run_appending(path, [=] { return Copy_Log_Files(name, version, destination); });
}

}  // extern "C"
