// The collection for programs: docs/manifest.md tells what is in it.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "result/collection.h"

namespace host {

// How much of it: where there is little room, less is better than nothing.
enum class Detail { kReadable, kDense, kRowsOnly };

[[nodiscard]] std::string manifest_of(const Collection& collection,
                                      const std::vector<Problem>& problems, Detail detail);

// Masks every text in it.
void mask_texts(nlohmann::ordered_json& json, Masker& masker);

// As the manifest tells of them.
[[nodiscard]] nlohmann::ordered_json masks_of(const Masking& masking);

}  // namespace host
