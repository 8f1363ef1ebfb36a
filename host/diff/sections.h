// The sections of all files of a collection, as they are compared.
#pragma once

#include <cstdint>
#include <map>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <utility>
#include <vector>

#include "bundle/bundle.h"
#include "diff/noise.h"

namespace host {

struct ComparedLine {
  std::uint64_t key;  // of what is compared
  std::string text;   // as it stands, or its start
};

struct ComparedSection {
  std::vector<ComparedLine> lines;
  std::uint64_t order = 0;  // a digest of all keys in their order
  std::uint64_t left = 0;   // lines that are too many to be kept
  bool is_unordered = false;
};

// By file and title; files without titles have one section, "".
using Sections = std::map<std::pair<std::string, std::string>, ComparedSection>;

// Of all files but those that tell of the others.
[[nodiscard]] Sections sections_of(const Bundle& bundle, const nlohmann::json& manifest,
                                   const NoiseRules& rules);

}  // namespace host
