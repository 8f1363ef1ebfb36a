// Version keys: how the host names one installation.
#pragma once

#include <string_view>

#include "sit/pelver.h"
#include "situtil/path.h"

namespace sit {

// A key taken apart at its ":". Points into the key.
class VersionKey {
 public:
  explicit VersionKey(const char* key) noexcept;

  [[nodiscard]] std::string_view release() const noexcept { return release_; }
  [[nodiscard]] std::string_view pelloran_version() const noexcept { return pelloran_version_; }

  // Whether the record is of the key's release. A key longer than keys may be names none.
  [[nodiscard]] bool names_release_of(const PHMVER& record) const noexcept;

  // The same of the whole key, which then is of no monitoring installation.
  [[nodiscard]] bool is_release_of(const PHMVER& record) const noexcept;

  // Whether the record has the key's bitness.
  [[nodiscard]] bool has_bitness_of(const PHMVER& record) const noexcept;

  // Whether the record belongs to the key's Pelloran version.
  [[nodiscard]] bool names_owner_of(const PHMVER& record) const noexcept;

  // Says so when the key is longer than keys may be.
  void log_if_too_long() const noexcept;

 private:
  const char* key_;
  std::string_view release_;
  std::string_view pelloran_version_;
};

// The key of a record, as GetPelVersList lists it. False when it does not fit.
[[nodiscard]] bool version_key(const PHMVER& record, Path& key) noexcept;

// A name of AppendVerLogFile: completes the prefix that is in `name`. False when it does not fit.
using VersionedName = BoundedText<255>;
[[nodiscard]] bool append_version(const char* version, int bitness, VersionedName& name) noexcept;

// "Could not find any installation that matches ...".
void log_no_match(const VersionKey& key) noexcept;

}  // namespace sit
