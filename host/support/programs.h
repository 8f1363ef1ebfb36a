// The programs that this machine has.
#pragma once

#include <string>
#include <string_view>

namespace host {

// Where programs usually are, for what PATH leaves out.
inline constexpr std::string_view kUsualPath = "/usr/bin:/bin:/usr/sbin:/sbin";

// PATH, and where programs usually are.
[[nodiscard]] std::string whole_path();

// Whether this machine has the program that a command begins with, anywhere there.
[[nodiscard]] bool is_here(std::string_view command);

}  // namespace host
