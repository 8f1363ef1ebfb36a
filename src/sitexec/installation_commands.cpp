// The commands about one installation, which the host names by its version key.
#include <sys/stat.h>

#include <cerrno>

#include "pelsec.h"
#include "pelver/installations.h"
#include "pelver/keys.h"
#include "prodlic/prodlic.h"
#include "sitexec/commands.h"
#include "sitexec/frame.h"
#include "situtil/path.h"

namespace sit::sitexec {
namespace {

using pelver::installations;
using pelver::VersionKey;

// On a machine without any installation there is nothing to say.
std::optional<int> nothing_without_installations() noexcept {
  return installations().empty() ? std::optional<int>{SIT_OK} : std::nullopt;
}

// The folder named after both versions. False when its path does not fit; the report says so.
bool monitor_folder(const PHMVER& record, const char* parent, Path& folder) noexcept {
  pelver::VersionedName delvon;
  pelver::VersionedName pelloran;
  if (!delvon.append("Delvon") || !pelver::append_version(record.version, record.bitness, delvon) ||
      !pelloran.append("Pel") ||
      !pelver::append_version(record.pelVersion, record.bitness, pelloran)) {
    log("ERROR: No folder can be named after Delvon %s\n", record.version);
    return false;
  }
  return compose_path(folder, {text_of(parent), "/", delvon.view(), pelloran.view()});
}

int copy_into_folder(char* directory, const VersionKey& key) noexcept {
  const PHMVER* record = installations().find([&key](const PHMVER& candidate) {
    return key.means(candidate, SEL_MONITOR, {.owner = true, .bitness = false});
  });
  if (record == nullptr) {
    key.log_if_too_long();
    log_pieces({"Could not find Delvon version ", key.release(), "  -> Pelloran version ",
                key.owner(), "\n"});
    return SIT_OK;
  }
  Path folder;
  if (!monitor_folder(*record, directory, folder)) return ENAMETOOLONG;
  put_text(directory, folder.view());
  constexpr mode_t kPermissions = 0755;
  if (::mkdir(folder.c_str(), kPermissions) != 0) {
    const int error = errno;
    log_verbose("Could not create directory %s\n", folder.c_str());
    return error;
  }
  prodlic::copy_monitor_files(folder.c_str(), *record);
  return SIT_OK;
}

}  // namespace

int write_configuration(const Report& report, const char* version_key, int selector) noexcept {
  return run_framed(
      about_installations(report), nothing_without_installations, [version_key, selector] {
        const VersionKey key{version_key};
        const PHMVER* record = installations().find([&key, selector](const PHMVER& candidate) {
          return !pelver::is_web_client(candidate) &&
                 key.means(candidate, selector, {.owner = true});
        });
        if (record == nullptr) {
          key.log_no_match();
        } else {
          prodlic::write_configuration(*record);
        }
      });
}

int write_files(const Report& report, const char* version_key, int selector) noexcept {
  return run_framed(about_installations(report), nothing_without_installations,
                    [version_key, selector] {
                      const VersionKey key{version_key};
                      bool found = false;
                      for (const PHMVER& record : installations()) {
                        if (!key.means(record, selector, {.owner = true})) continue;
                        found = true;
                        prodlic::list_installation(record);
                      }
                      if (!found) key.log_no_match();
                    });
}

// Each installation gets its own opening and end mark.
int write_stores(const Report& report, const char* version_key, int selector) noexcept {
  const Frame frame = about_installations(report);
  if (const int missing = prepare(frame); missing != SIT_OK) return missing;
  const VersionKey key{version_key};
  bool found = false;
  int result = SIT_OK;
  for (const PHMVER& record : installations()) {
    if (!key.means(record, selector, {})) continue;
    found = true;
    const pelsec::StoreFormat format = pelsec::store_format(record);
    if (format == pelsec::StoreFormat::kNone) continue;
    result = run_framed(frame, [&record, format] { pelsec::write_stores(record, format); });
  }
  if (!found) {
    static_cast<void>(
        run_framed(frame, nothing_without_installations, [&key] { key.log_no_match(); }));
  }
  return result;
}

int copy_monitor_files(const char* path, char* directory, const char* version_key) noexcept {
  const auto misses_argument = [=]() -> std::optional<int> {
    if (directory == nullptr || version_key == nullptr) return SIT_FAILED;
    return std::nullopt;
  };
  return run_framed(taking_notes(path), misses_argument, [directory, version_key] {
    return copy_into_folder(directory, VersionKey{version_key});
  });
}

}  // namespace sit::sitexec
