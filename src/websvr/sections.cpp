#include "websvr/sections.h"

#include "commfile.h"
#include "file_status.h"
#include "situtil/capture.h"
#include "situtil/lines.h"
#include "situtil/listing.h"
#include "situtil/path.h"
#include "websvr/values.h"

namespace sit::websvr {

int write_contents(const char* heading, const char* failure, const char* path) noexcept {
  log_computed(heading, path);
  const int error = log_file(path);
  if (error != 0) log_computed(failure, path, error);
  return error;
}

void ScriptDirectories::list(std::string_view directory, std::string_view alias) noexcept {
  Path path;
  if (!compose_path(path, {without_trailing_slash(directory)})) return;
  last_is_empty_ = path.empty();
  log_computed(words_.heading, path.c_str(), line_text(alias).c_str());
  if (exists(path.c_str())) {
    list_files(path.c_str(), Depth::kOne);
  } else {
    log_computed(words_.missing, path.c_str());
  }
}

void ScriptDirectories::finish(const char* conf) const noexcept {
  if (last_is_empty_) log_computed(words_.none, conf);
}

}  // namespace sit::websvr
