// Pieces of the report that both web servers have.
#pragma once

#include <string_view>

namespace sit::websvr {

// Writes a file into the report below `heading`; `failure` takes its path and the error number.
// Returns what reading it gave.
int write_contents(const char* heading, const char* failure, const char* path) noexcept;

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

}  // namespace sit::websvr
