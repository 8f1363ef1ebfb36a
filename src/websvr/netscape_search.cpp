// Finding one server instance under a Netscape/iPlanet server root.
#include <dirent.h>

#include <cerrno>

#include "commfile.h"
#include "commutils/views.h"
#include "file_status.h"
#include "handles.h"
#include "situtil/lines.h"
#include "websvr/websvr.h"

namespace sit::websvr {
namespace {

// Only the first server id of the file counts.
bool has_server_id(const char* conf, const char* server_name) noexcept {
  LineReader reader{conf};
  if (reader.error() != 0) {
    log_verbose("Failed to open config file %s, errno=%d\n\n", conf, reader.error());
    return false;
  }
  const std::string_view marker = text_of(nsSrvId);
  Line line;
  std::size_t found = std::string_view::npos;
  while (found == std::string_view::npos) {
    if (!reader.next(line)) return false;
    found = line.text().find(marker);
  }
  log_verbose("Found 'ServerID' in conf file, line is:\n  %s\n", line_text(line.text()).c_str());
  const LineText id = line_text(tail(line.content(), found + marker.size()));
  log_verbose("Comparing '%s' to '%s'\n", id.c_str(), server_name);
  if (id.view() != server_name) return false;
  log_verbose("Found server %s, as required\n", server_name);
  return true;
}

bool is_candidate(std::string_view entry) noexcept {
  return entry.starts_with("https-") && entry != "https-admserv";
}

// The next entry that may be an instance; null at the end. A reading error is left in errno.
const char* next_candidate(DIR* directory) noexcept {
  for (;;) {
    errno = 0;
    const dirent* entry = ::readdir(directory);
    if (entry == nullptr) return nullptr;
    if (is_candidate(entry->d_name)) return entry->d_name;
  }
}

// What the walk through a server root has come across.
struct Findings {
  int candidates = 0;
  int accepted = 0;
  unsigned int flags = 0;

  [[nodiscard]] int result() const noexcept {
    if (accepted == 1) return SIT_OK;
    if (accepted > 1) return SIT_SERVERS_AMBIGUOUS;
    if (candidates == 0) return SIT_NO_SERVER;
    return (flags & SIT_CONFIG_MISSING) != 0 ? SIT_NO_SERVER_CONFIG : SIT_NO_SERVER_OF_NAME;
  }
};

}  // namespace

bool is_server(const char* server_root, const char* entry, const char* server_name,
               unsigned int& flags) noexcept {
  log_verbose("Checking for Netscape Server name '%s' in %s%c%s\n", server_name, server_root, '/',
              entry);
  Path conf;
  const bool fits =
      compose_path(conf, {text_of(server_root), "/", text_of(entry), "/config/magnus.conf"});
  if (!fits || !exists(conf.c_str())) {
    if (fits) log_verbose("Config file '%s' does not exist\n\n", conf.c_str());
    flags |= SIT_CONFIG_MISSING;
    return false;
  }
  log_verbose("File %s has been found\n", conf.c_str());
  if (is_missing(server_name)) {
    log_verbose("srvname is empty (no -wnsrv param?), assuming this to be correct server\n\n");
    return true;
  }
  return has_server_id(conf.c_str(), server_name);
}

int search(const char* server_root, const char* server_name, Path& instance) noexcept {
  instance = Path{};
  const UniqueDir directory{::opendir(server_root)};
  if (directory == nullptr) return errno != 0 ? errno : SIT_NO_SERVER;
  Findings findings;
  while (const char* entry = next_candidate(directory.get())) {
    ++findings.candidates;
    if (!is_server(server_root, entry, server_name, findings.flags)) continue;
    if (++findings.accepted == 1) static_cast<void>(join_path(instance, {server_root, entry}));
  }
  return errno != 0 ? errno : findings.result();
}

}  // namespace sit::websvr
