// The commands about one installation, which the host names by its version key.
#include <sys/stat.h>

#include <cerrno>

#include "commfile.h"
#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "pelver/keys.h"
#include "session.h"
#include "sit/commutils.h"
#include "sit/pelsec.h"
#include "sit/prodlic.h"
#include "sit/situtil.h"
#include "sitexec/frame.h"
#include "situtil/path.h"

namespace {

using sit::VersionKey;

bool is_of_kind(const PHMVER& record, unsigned kinds) noexcept {
  return (record.flags & kinds) != 0;
}

bool matches(const PHMVER& record, const VersionKey& key, int selector) noexcept {
  return IsCorrectProduct(&record, selector) != 0 &&
         (!is_of_kind(record, PK_MONITOR_MASK) || key.names_owner_of(record)) &&
         key.names_release_of(record) && key.has_bitness_of(record);
}

// The frame of a command that has nothing to say on a machine without any installation.
template <std::invocable Body>
int run_on_installations(const char* path, int mode, int final, Body body) noexcept {
  if (sit::is_missing(path)) return SIT_NO_REPORT_PATH;
  sit::ensure_session();
  sit::ensure_installations();
  if (pphm == nullptr) return SIT_OK;
  return sit::run_framed({.path = path, .mode = mode, .final = final}, body);
}

enum class StoreFormat { kNone, kBefore100B, kFrom100B };

StoreFormat store_format(const PHMVER& record) noexcept {
  constexpr int kLastUnreported = 8;
  constexpr int kTen = 10;
  if (record.major <= kLastUnreported) return StoreFormat::kNone;
  if (record.major < kTen) return StoreFormat::kBefore100B;
  if (record.major > kTen || record.minor >= 1) return StoreFormat::kFrom100B;
  const std::string_view level = sit::text_of(record.maintLevel);
  const bool is_past_a = !level.empty() && static_cast<unsigned char>(level.front()) > 'A';
  return is_past_a ? StoreFormat::kFrom100B : StoreFormat::kBefore100B;
}

// Each installation gets its own opening and end mark.
int write_security(const char* path, int mode, StoreFormat format, PHMVER& record) noexcept {
  return sit::run_framed({.path = path, .mode = mode, .final = SIT_FINAL}, [&record, format] {
    if (format == StoreFormat::kFrom100B) {
      LogSecurityInfo100B(&record);
    } else {
      LogSecurityInfoPre100B(&record);
    }
  });
}

const PHMVER* find_monitor(const VersionKey& key) noexcept {
  for (const PHMVER* record = pphm; record != nullptr; record = record->next) {
    if (IsCorrectProduct(record, SEL_MONITOR) != 0 && key.names_owner_of(*record) &&
        key.names_release_of(*record)) {
      return record;
    }
  }
  return nullptr;
}

// The folder named after both versions. False when its path does not fit; the report says so.
bool delvon_folder(const PHMVER& record, const char* parent, sit::Path& folder) noexcept {
  const char* name = AppendVerLogFile(record.version, record.bitness, "Delvon");
  const sit::HeapText delvon = sit::duplicate(sit::text_of(name));
  const char* pelloran = AppendVerLogFile(record.pelVersion, record.bitness, "Pel");
  if (sit::is_missing(delvon.get()) || pelloran == nullptr) {
    LogMsg("ERROR: No folder can be named after Delvon %s\n", record.version);
    return false;
  }
  return sit::compose(folder, "The path", {sit::text_of(parent), "/", delvon.get(), pelloran});
}

int collect_delvon_files(char* directory, const VersionKey& key) noexcept {
  const PHMVER* record = find_monitor(key);
  if (record == nullptr) {
    key.log_if_too_long();
    const sit::HeapText message =
        sit::concatenate({"Could not find Delvon version ", key.release(), "  -> Pelloran version ",
                          key.pelloran_version(), "\n"});
    LogString(message.get());
    return SIT_OK;
  }
  sit::Path folder;
  if (!delvon_folder(*record, directory, folder)) return ENAMETOOLONG;
  stcopy(directory, folder.c_str());
  constexpr mode_t kPermissions = 0755;
  if (::mkdir(folder.c_str(), kPermissions) != 0) {
    const int error = errno;
    LogMsgV("Could not create directory %s\n", folder.c_str());
    return error;
  }
  CopyDelvon_Files(folder.c_str(), record);
  return SIT_OK;
}

}  // namespace

extern "C" {

int GetPelCFGInfo(const char* path, const char* version_key, int mode, int final,
                  int selector) noexcept {
  return run_on_installations(path, mode, final, [version_key, selector] {
    const VersionKey key{version_key};
    for (PHMVER* record = pphm; record != nullptr; record = record->next) {
      if (matches(*record, key, selector) && !is_of_kind(*record, PK_WEBCLIENT)) {
        GetLicenseInfo(record);
        return;
      }
    }
    sit::log_no_match(key);
  });
}

int GetPelInstFiles(const char* path, const char* version_key, int mode, int /*ignored*/,
                    int selector) noexcept {
  return run_on_installations(path, mode, SIT_FINAL, [version_key, selector] {
    const VersionKey key{version_key};
    bool found = false;
    for (const PHMVER* record = pphm; record != nullptr; record = record->next) {
      if (!matches(*record, key, selector)) continue;
      found = true;
      GetFileListInfo(record);
    }
    if (!found) sit::log_no_match(key);
  });
}

int GetPelSecurityLog(const char* path, const char* version_key, int mode, int /*ignored*/,
                      int selector) noexcept {
  if (sit::is_missing(path)) return SIT_NO_REPORT_PATH;
  sit::ensure_session();
  sit::ensure_installations();
  const VersionKey key{version_key};
  bool found = false;
  int result = SIT_OK;
  for (PHMVER* record = pphm; record != nullptr; record = record->next) {
    if (IsCorrectProduct(record, selector) == 0 || !key.names_release_of(*record) ||
        !key.has_bitness_of(*record)) {
      continue;
    }
    found = true;
    const StoreFormat format = store_format(*record);
    if (format != StoreFormat::kNone) result = write_security(path, mode, format, *record);
  }
  if (pphm != nullptr && !found) {
    static_cast<void>(sit::run_framed({.path = path, .mode = mode, .final = SIT_FINAL},
                                      [&key] { sit::log_no_match(key); }));
  }
  return result;
}

int GetDelvonFiles(const char* path, char* directory, const char* version_key) noexcept {
  sit::ensure_session();
  sit::ensure_installations();
  if (directory == nullptr || version_key == nullptr) return SIT_FAILED;
  return sit::run_appending(path, [directory, version_key] {
    return collect_delvon_files(directory, VersionKey{version_key});
  });
}

}  // extern "C"
