#include "pelver/keys.h"

#include <optional>

#include "commfile.h"
#include "commutils/fields.h"
#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "sit/commutils.h"

namespace sit {
namespace {

constexpr char kSeparator = ':';

// A version text without its patch part; null when memory runs out.
HeapText release_of(std::string_view version) noexcept {
  HeapText release = duplicate(version);
  RmPatchInfoPHM(release.get());
  return release;
}

}  // namespace

VersionKey::VersionKey(const char* key) noexcept
    : key_(key),
      release_(field_of(text_of(key), 1, kSeparator).value_or("")),
      pelloran_version_(field_of(text_of(key), 2, kSeparator).value_or("")) {}

bool VersionKey::names_release_of(const PHMVER& record) const noexcept {
  if (record.version == nullptr || text_of(key_).size() > Path::kMaxLength) return false;
  const HeapText release = release_of(record.version);
  return release != nullptr && release_ == release.get();
}

bool VersionKey::is_release_of(const PHMVER& record) const noexcept {
  return release_ == text_of(key_) && names_release_of(record);
}

bool VersionKey::has_bitness_of(const PHMVER& record) const noexcept {
  return record.bitness == GetBitness(key_);
}

void VersionKey::log_if_too_long() const noexcept {
  const std::string_view key = text_of(key_);
  if (key.size() <= Path::kMaxLength) return;
  LogString(TooLong{"The version key", {key}, Path::kMaxLength}.c_str());
}

bool VersionKey::names_owner_of(const PHMVER& record) const noexcept {
  return record.pelVersion != nullptr && pelloran_version_ == record.pelVersion;
}

bool version_key(const PHMVER& record, Path& key) noexcept {
  const HeapText release = release_of(text_of(record.version));
  const bool is_monitor = (record.flags & PK_MONITOR_MASK) != 0;
  return release != nullptr && key.append({release.get(), is_monitor ? ":" : "",
                                           is_monitor ? text_of(record.pelVersion) : ""});
}

bool append_version(const char* version, int bitness, VersionedName& name) noexcept {
  const HeapText release = release_of(text_of(version));
  if (release == nullptr) return false;
  strremove(release.get(), ".");
  if (bitness == -1) bitness = GetBitness(version);
  const std::string_view suffix = bitness == 64 ? "(64)" : bitness == 32 ? "(32)" : "";
  return name.append({release.get(), suffix});
}

void log_no_match(const VersionKey& key) noexcept {
  key.log_if_too_long();
  const HeapText message = concatenate({"Could not find any installation that matches ",
                                        key.release(), " ", key.pelloran_version(), " \n"});
  LogString(message.get());
}

}  // namespace sit

namespace {

// The result of AppendVerLogFile; the next call replaces it.
constinit char* last_name = nullptr;

}  // namespace

extern "C" {

const char* AppendVerLogFile(const char* version, int bitness, const char* prefix) noexcept {
  sit::VersionedName name;
  const bool fits =
      name.append(sit::text_of(prefix)) && sit::append_version(version, bitness, name);
  return sit::answer(last_name, fits ? std::optional{name.view()} : std::nullopt);
}

int Is64BitWindows() noexcept { return 0; }

int GetBitness(const char* /*version*/) noexcept { return 0; }

}  // extern "C"
