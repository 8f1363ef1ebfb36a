// The configuration of an Apache web server.
#include "commfile.h"
#include "commutils/views.h"
#include "file_status.h"
#include "situtil/lines.h"
#include "websvr/sections.h"
#include "websvr/values.h"
#include "websvr/websvr.h"

namespace sit::websvr {
namespace {

constexpr ScriptWords kScriptAliasWords{
    .heading = "\nDirectory listing of %s (alias %s)\n",
    .missing = "Directory %s does not exist\n",
    .none = "\n\nNo ScriptAlias directories found in %s\n\n",
};

// Narrows the line to what follows the keyword. False when it has none outside a comment.
bool skip_keyword(std::string_view& line) noexcept {
  constexpr std::string_view kKeyword = "ScriptAlias ";
  const std::size_t found = line.find(kKeyword);
  if (found == std::string_view::npos || line.find('#') < found) return false;
  line = tail(line, found + kKeyword.size());
  return true;
}

}  // namespace

bool find_apache_conf(std::string_view server_root, Path& conf) noexcept {
  const bool fits = server_root.empty() ? conf.append("/etc/httpd/conf/httpd.conf")
                                        : join_path(conf, {server_root, "conf", "httpd.conf"});
  return fits && exists(conf.c_str());
}

int write_apache(const char* conf, std::string_view server_root) noexcept {
  const int error =
      write_contents("Contents of Apache configuration file %s\n\n", "Failed to read %s\n", conf);
  if (error != 0) return error;
  log("\n\n");
  log_title("Apache ScriptAlias Directory Listings");
  list_script_aliases(conf, server_root);
  return 0;
}

void list_script_aliases(const char* conf, std::string_view server_root) noexcept {
  LineReader reader{conf};
  if (reader.error() != 0) return;
  ScriptDirectories directories{kScriptAliasWords};
  for (Line line; reader.next(line);) {
    std::string_view values = line.text();
    if (!skip_keyword(values)) continue;
    const ConfValue alias = read_value(values);
    Path directory;
    if (make_absolute(directory, read_value(alias.rest).text, server_root)) {
      directories.list(directory.view(), alias.text);
    }
  }
  directories.finish(conf);
}

}  // namespace sit::websvr
