#include "support/names.h"

namespace host {

std::string safe_name(std::string_view text) {
  constexpr std::string_view kSafe =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-";
  constexpr std::size_t kLongest = 100;
  std::string name(text.substr(0, kLongest));
  for (char& c : name) {
    if (kSafe.find(c) == std::string_view::npos) c = '_';
  }
  if (name.empty() || name[0] == '.' || name[0] == '-') name.insert(0, "_");
  return name;
}

std::string Names::take(std::string_view wanted) {
  const std::string first = safe_name(wanted);
  std::string name = first;
  for (int i = 2; !taken_.insert(name).second; ++i) name = first + "-" + std::to_string(i);
  return name;
}

}  // namespace host
