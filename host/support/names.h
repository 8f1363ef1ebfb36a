// Names for files and folders, made of whatever is found on the machine.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace host {

// The text with only letters, digits, ".", "_" and "-" left, and no "." or "-" at its start.
[[nodiscard]] std::string safe_name(std::string_view text);

// Names that are safe and never given twice.
class Names {
 public:
  Names() = default;
  explicit Names(std::set<std::string> taken) : taken_(std::move(taken)) {}

  [[nodiscard]] std::string take(std::string_view wanted);

 private:
  std::set<std::string> taken_;
};

}  // namespace host
