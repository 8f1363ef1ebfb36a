#include "pelver/keys.h"

#include <cstdint>

#include "commfile.h"
#include "commutils/fields.h"
#include "commutils/heap_text.h"
#include "commutils/text.h"
#include "commutils/views.h"
#include "pelver/installations.h"

namespace sit::pelver {
namespace {

constexpr char kSeparator = ':';

// The number that the digits at the start of `text` form, within 16 bits; 0 when there are none.
std::int16_t leading_number(std::string_view text) noexcept {
  constexpr int kMost = INT16_MAX;
  int number = 0;
  for (const char c : without_leading_blanks(text)) {
    if (!is_digit(c)) break;
    number = number * 10 + (c - '0');
    if (number > kMost) return kMost;
  }
  return static_cast<std::int16_t>(number);
}

}  // namespace

std::string_view release_of(std::string_view version) noexcept {
  const std::size_t point = version.find('.');
  if (point == std::string_view::npos) return version;
  const std::size_t release_end = point + 3;
  if (version.size() <= release_end) return version;
  const std::size_t patch = release_end + 1;
  const bool has_patch_number = patch < version.size() && is_digit(version[patch]);
  return has_patch_number || contains(version, "SP") ? head(version, release_end) : version;
}

void parse_version(std::string_view version, PHMVER& record) noexcept {
  const std::size_t point = version.find('.');
  if (point == std::string_view::npos) return;
  record.major = leading_number(head(version, point));
  const std::string_view rest = tail(version, point + 1);
  // A number that ends the text is no minor version: nothing says where it stops.
  const std::size_t digits = rest.find_first_not_of("0123456789");
  if (digits != std::string_view::npos) record.minor = leading_number(head(rest, digits));
}

VersionKey::VersionKey(const char* key) noexcept
    : key_(key),
      release_(field_of(text_of(key), 1, kSeparator).value_or("")),
      owner_(field_of(text_of(key), 2, kSeparator).value_or("")) {}

bool VersionKey::means(const PHMVER& record, int selector, const KeyRule& rule) const noexcept {
  const std::string_view key = text_of(key_);
  if (record.version == nullptr || key.size() > Path::kMaxLength) return false;
  if (rule.owner && is_monitor(record) && !names_owner_of(record)) return false;
  if (rule.bitness && record.bitness != bitness_named_in(key_)) return false;
  if (rule.nothing_else && release_ != key) return false;
  return belongs_to(record, selector) && release_ == release_of(record.version);
}

bool VersionKey::names_owner_of(const PHMVER& record) const noexcept {
  return record.pelVersion != nullptr && owner_ == record.pelVersion;
}

void VersionKey::log_if_too_long() const noexcept {
  const std::string_view key = text_of(key_);
  if (key.size() <= Path::kMaxLength) return;
  log_text(TooLong{"The version key", {key}, Path::kMaxLength}.view());
}

void VersionKey::log_no_match() const noexcept {
  log_if_too_long();
  log_pieces({"Could not find any installation that matches ", release_, " ", owner_, " \n"});
}

bool append_key(const PHMVER& record, Path& key) noexcept {
  const bool has_owner = is_monitor(record);
  return key.append({release_of(text_of(record.version)), has_owner ? ":" : "",
                     has_owner ? text_of(record.pelVersion) : ""});
}

bool append_version(const char* version, int bitness, VersionedName& name) noexcept {
  const HeapText release = duplicate(release_of(text_of(version)));
  if (release == nullptr) return false;
  remove_character(release.get(), '.');
  if (bitness == -1) bitness = bitness_named_in(version);
  const std::string_view suffix = bitness == 64 ? "(64)" : bitness == 32 ? "(32)" : "";
  return name.append({release.get(), suffix});
}

}  // namespace sit::pelver
