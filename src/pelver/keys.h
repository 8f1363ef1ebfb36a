// Version texts and version keys: how the host names one installation.
#pragma once

#include <string_view>

#include "sit/pelver.h"
#include "situtil/path.h"

namespace sit::pelver {

// The version text without its patch part.
[[nodiscard]] std::string_view release_of(std::string_view version) noexcept;

// As ParseVerString.
void parse_version(std::string_view version, PHMVER& record) noexcept;

// The bitness that a version text or key names: none on Unix.
[[nodiscard]] inline int bitness_named_in(const char* /*version*/) noexcept { return 0; }

// What a key must tell of a record besides its release.
struct KeyRule {
  bool owner = false;  // the Pelloran version that a monitoring record belongs to
  bool bitness = true;
  bool nothing_else = false;  // the key is the release alone
};

// A key taken apart at its ":". Points into the key.
class VersionKey {
 public:
  explicit VersionKey(const char* key) noexcept;

  [[nodiscard]] std::string_view release() const noexcept { return release_; }
  [[nodiscard]] std::string_view owner() const noexcept { return owner_; }

  // Whether the selector and the key mean this record. A key longer than keys may be means none.
  [[nodiscard]] bool means(const PHMVER& record, int selector, const KeyRule& rule) const noexcept;

  // Says so when the key is longer than keys may be.
  void log_if_too_long() const noexcept;

  // "Could not find any installation that matches ...".
  void log_no_match() const noexcept;

 private:
  [[nodiscard]] bool names_owner_of(const PHMVER& record) const noexcept;

  const char* key_;
  std::string_view release_;
  std::string_view owner_;
};

// The key of a record, as GetPelVersList lists it. False when it does not fit.
[[nodiscard]] bool append_key(const PHMVER& record, Path& key) noexcept;

// A name of AppendVerLogFile: completes the prefix that is in `name`. False when it does not fit.
using VersionedName = BoundedText<255>;
[[nodiscard]] bool append_version(const char* version, int bitness, VersionedName& name) noexcept;

}  // namespace sit::pelver
