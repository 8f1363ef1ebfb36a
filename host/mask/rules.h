// What is a secret, as rules that support teams can write.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "support/rule_file.h"

namespace host {

// A part of a line. All groups of its pattern that took part in a match are secrets.
struct MaskRule {
  std::string name;
  Pattern pattern;
  Pattern except;  // a match that this one finds something in is no secret; null: none
  Pattern unless;  // a value that this one matches whole is no secret; null: none
};

// Lines between two others, as those of a private key. Where the last one is missing, the block
// ends before the first line that cannot be inside.
struct MaskBlock {
  std::string name;
  Pattern begin;
  Pattern inside;
  Pattern end;
  Pattern alone;  // a line that may be inside though no begin was seen: what ends there will tell
};

struct MaskRules {
  std::vector<MaskRule> rules;
  std::vector<MaskBlock> blocks;
  std::vector<Pattern> kept_binaries;  // names of files that are no text and go home as they are
  Pattern any;                         // finds where one of all these may begin

  // Those that come with the program, those of /etc/sit/mask.d, and these files. Throws UsageError,
  // naming file and rule, for one that cannot be used: each must do what its examples say.
  [[nodiscard]] static MaskRules load(const std::vector<std::string>& more);
};

// A secret in a line.
struct Secret {
  std::size_t begin;
  std::size_t end;
  std::string_view rule;
};

// Those of one line, in order, without overlaps.
[[nodiscard]] std::vector<Secret> secrets_in(std::string_view line, const MaskRules& rules);

// What masks begin with; a value that does is one.
inline constexpr std::string_view kMaskStart = "[masked ";

}  // namespace host
