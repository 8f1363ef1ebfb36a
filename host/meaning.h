// What a result code means, in words.
#pragma once

#include <string>

#include "catalogue.h"

namespace host {

// What the call `entry` means by it.
[[nodiscard]] std::string meaning_of(const Entry& entry, int code);

}  // namespace host
