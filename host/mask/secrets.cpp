// Finding the secrets of one line.
#include <algorithm>
#include <array>

#include "mask/rules.h"

namespace host {
namespace {

using re2::StringPiece;

constexpr int kMostGroups = 12;

bool is_excused(const MaskRule& rule, const StringPiece& match, const StringPiece& value) {
  const std::string_view text{value.data(), value.size()};
  return value.empty() || text.starts_with(kMaskStart) ||
         (rule.except != nullptr && RE2::PartialMatch(match, *rule.except)) ||
         (rule.unless != nullptr && RE2::FullMatch(value, *rule.unless));
}

void add_secrets(const MaskRule& rule, const StringPiece& line, std::vector<Secret>& secrets) {
  std::array<StringPiece, kMostGroups> found;
  const int groups = std::min(rule.pattern->NumberOfCapturingGroups() + 1, kMostGroups);
  for (std::size_t at = 0; at <= line.size();) {
    if (!rule.pattern->Match(line, at, line.size(), RE2::UNANCHORED, found.data(), groups)) return;
    const auto offset = [&line](const char* place) {
      return static_cast<std::size_t>(place - line.data());
    };
    std::size_t end = offset(found[0].data()) + std::max<std::size_t>(found[0].size(), 1);
    for (int i = 1; i < groups; ++i) {
      const StringPiece& value = found[static_cast<std::size_t>(i)];
      if (value.data() == nullptr || is_excused(rule, found[0], value)) continue;
      secrets.push_back({offset(value.data()), offset(value.data()) + value.size(), rule.name});
    }
    at = end;
  }
}

}  // namespace

std::vector<Secret> secrets_in(std::string_view line, const MaskRules& rules) {
  std::vector<Secret> all;
  for (const MaskRule& rule : rules.rules) add_secrets(rule, {line.data(), line.size()}, all);
  std::stable_sort(all.begin(), all.end(),
                   [](const Secret& a, const Secret& b) { return a.begin < b.begin; });
  std::vector<Secret> apart;
  for (const Secret& secret : all) {
    if (apart.empty() || secret.begin >= apart.back().end) {
      apart.push_back(secret);
    } else {
      apart.back().end = std::max(apart.back().end, secret.end);
    }
  }
  return apart;
}

}  // namespace host
