// The configuration of an Apache web server.
#include "commfile.h"
#include "commutils/views.h"
#include "sit/situtil.h"
#include "websvr/websvr.h"

namespace {

constexpr sit::ScriptWords kScriptAliasWords{
    .heading = "\nDirectory listing of %s (alias %s)\n",
    .missing = "Directory %s does not exist\n",
    .none = "\n\nNo ScriptAlias directories found in %s\n\n",
};

bool find_conf(sit::Path& conf, const char* server_root) noexcept {
  const std::string_view root = sit::text_of(server_root);
  const bool fits = root.empty() ? conf.append("/etc/httpd/conf/httpd.conf")
                                 : sit::join_path(conf, {root, "conf", "httpd.conf"});
  return fits && FileExists(conf.c_str()) != 0;
}

// Narrows the line to what follows the keyword. False when it has none outside a comment.
bool skip_keyword(std::string_view& line) noexcept {
  constexpr std::string_view kKeyword = "ScriptAlias ";
  const std::size_t found = line.find(kKeyword);
  if (found == std::string_view::npos || line.find('#') < found) return false;
  line = sit::tail(line, found + kKeyword.size());
  return true;
}

}  // namespace

extern "C" {

int GetApacheInfo(const char* path, const char* server_root) noexcept {
  if (sit::is_missing(path)) return SIT_NO_REPORT_PATH;
  sit::Path conf;
  if (!find_conf(conf, server_root)) return SIT_NOT_FOUND;
  if (const int opened = LogOpen(path, SIT_CREATE); opened != SIT_OK) return opened;
  LogMsg("\n");
  LogTitle("Apache Configuration");
  const int error = sit::log_contents("Contents of Apache configuration file %s\n\n",
                                      "Failed to read %s\n", conf.c_str());
  if (error != SIT_OK) {
    static_cast<void>(LogClose(SIT_FINAL));
    return error;
  }
  LogMsg("\n\n");
  LogTitle("Apache ScriptAlias Directory Listings");
  FindApacheScriptAlias(conf.c_str(), server_root);
  return LogClose(SIT_FINAL);
}

void FindApacheScriptAlias(const char* httpd_conf, const char* server_root) noexcept {
  sit::LineReader reader{httpd_conf};
  if (reader.error() != 0) return;
  sit::ScriptDirectories directories{kScriptAliasWords};
  for (sit::Line line; reader.next(line);) {
    std::string_view values = line.text();
    if (!skip_keyword(values)) continue;
    const sit::ConfValue alias = sit::read_value(values);
    const sit::ConfValue value = sit::read_value(alias.rest);
    sit::Path directory;
    if (sit::make_absolute(directory, value.text, sit::text_of(server_root))) {
      directories.list(directory.view(), alias.text);
    }
  }
  directories.finish(httpd_conf);
}

}  // extern "C"
