// What the result codes of the plug-in mean.
#pragma once

#include <string>

namespace host {

[[nodiscard]] std::string meaning_of(int code);

}  // namespace host
