// Pieces of the report that both web servers have.
#include "commfile.h"
#include "sit/situtil.h"
#include "websvr/websvr.h"

namespace sit {

int log_contents(const char* heading, const char* failure, const char* path) noexcept {
  log_computed(heading, path);
  const int error = ReadTextFile(path);
  if (error != 0) log_computed(failure, path, error);
  return error;
}

void ScriptDirectories::list(std::string_view directory, std::string_view alias) noexcept {
  Path path;
  if (!compose(path, "The path", {without_trailing_slash(directory)})) return;
  last_is_empty_ = path.empty();
  log_computed(words_.heading, path.c_str(), line_text(alias).c_str());
  if (FileExists(path.c_str()) != 0) {
    ListFiles(path.c_str(), 0);
  } else {
    log_computed(words_.missing, path.c_str());
  }
}

void ScriptDirectories::finish(const char* conf) const noexcept {
  if (last_is_empty_) log_computed(words_.none, conf);
}

}  // namespace sit
