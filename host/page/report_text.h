// A report as the page shows it.
#pragma once

#include <cstdint>
#include <set>
#include <string>

#include "support/folder.h"

namespace host {

// Text with a "?" for what no browser shows, and with what HTML takes for its own escaped.
[[nodiscard]] std::string html_text(std::string_view text);

// Which lines of a report are more than text.
struct MarkedLines {
  std::set<std::uint64_t> titles;
  std::set<std::uint64_t> wrong;
};

// The file as HTML, each marked line with the anchor "ID:LINE". Of a long file no more than its
// start; `is_whole` then is false.
[[nodiscard]] std::string html_of(const OutputFolder& folder, const std::string& file,
                                  const std::string& id, const MarkedLines& marked,
                                  std::uint64_t most, bool& is_whole);

}  // namespace host
