// What the reports on both web servers share.
#pragma once

#include <string_view>

#include "sit/websvr.h"
#include "situtil/lines.h"
#include "situtil/path.h"

namespace sit {

// A value of a configuration line and what follows it, the closing quote left out.
struct ConfValue {
  std::string_view text;
  std::string_view rest;
};

[[nodiscard]] ConfValue read_value(std::string_view line) noexcept;

[[nodiscard]] std::string_view without_trailing_slash(std::string_view path) noexcept;

// False when the path does not fit; it is then empty.
[[nodiscard]] bool make_absolute(Path& absolute, std::string_view path,
                                 std::string_view base) noexcept;

// Writes a file into the report below `heading`; `failure` takes its path and the error number.
// Returns what ReadTextFile returns.
int log_contents(const char* heading, const char* failure, const char* path) noexcept;

// How a server's script directories are reported.
struct ScriptWords {
  const char* heading;  // takes the directory and its alias
  const char* missing;  // takes the directory
  const char* none;     // takes the configuration file
};

class ScriptDirectories {
 public:
  explicit ScriptDirectories(const ScriptWords& words) noexcept : words_(words) {}

  void list(std::string_view directory, std::string_view alias) noexcept;
  // At the end of the configuration file.
  void finish(const char* conf) const noexcept;

 private:
  ScriptWords words_;
  bool last_is_empty_ = true;
};

}  // namespace sit
