// The summary and the reports as one page for a browser.
#pragma once

#include <string>
#include <vector>

#include "result/collection.h"
#include "support/folder.h"

namespace host {

inline constexpr const char* kPageFile = "index.html";

// Writes it into the folder, made of the files there. Throws Failure, and leaves none, where that
// cannot be done.
void write_page(const OutputFolder& folder, const Collection& collection,
                const std::vector<Problem>& problems);

}  // namespace host
