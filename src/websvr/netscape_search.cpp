// Finding one server instance under a Netscape/iPlanet server root.
#include <dirent.h>

#include <cerrno>

#include "commfile.h"
#include "commutils/views.h"
#include "sit/commutils.h"
#include "sit/situtil.h"
#include "websvr/websvr.h"

constinit const char* nsSrvId = "ServerID https-";

namespace {

// Only the first server id of the file counts.
bool has_server_id(const char* conf, const char* server_name) noexcept {
  sit::LineReader reader{conf};
  if (reader.error() != 0) {
    LogMsgV("Failed to open config file %s, errno=%d\n\n", conf, reader.error());
    return false;
  }
  const std::string_view marker = sit::text_of(nsSrvId);
  sit::Line line;
  std::size_t found = std::string_view::npos;
  while (found == std::string_view::npos) {
    if (!reader.next(line)) return false;
    found = line.text().find(marker);
  }
  LogMsgV("Found 'ServerID' in conf file, line is:\n  %s\n", sit::line_text(line.text()).c_str());
  const sit::LineText id = sit::line_text(sit::tail(line.content(), found + marker.size()));
  LogMsgV("Comparing '%s' to '%s'\n", id.c_str(), server_name);
  if (id.view() != server_name) return false;
  LogMsgV("Found server %s, as required\n", server_name);
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
struct Search {
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

extern "C" {

int CheckNetscapeServerName(const char* server_root, const char* entry, const char* server_name,
                            unsigned int* flags) noexcept {
  LogMsgV("Checking for Netscape Server name '%s' in %s%c%s\n", server_name, server_root, '/',
          entry);
  sit::Path conf;
  const bool fits =
      sit::compose(conf, "The path",
                   {sit::text_of(server_root), "/", sit::text_of(entry), "/config/magnus.conf"});
  if (!fits || FileExists(conf.c_str()) == 0) {
    if (fits) LogMsgV("Config file '%s' does not exist\n\n", conf.c_str());
    if (flags != nullptr) *flags |= SIT_CONFIG_MISSING;
    return 0;
  }
  LogMsgV("File %s has been found\n", conf.c_str());
  if (sit::is_missing(server_name)) {
    LogMsgV("srvname is empty (no -wnsrv param?), assuming this to be correct server\n\n");
    return 1;
  }
  return has_server_id(conf.c_str(), server_name) ? 1 : 0;
}

int GetNetscapeServerDir(const char* server_root, const char* server_name, char* output) noexcept {
  if (server_root == nullptr || output == nullptr) return EINVAL;
  output[0] = '\0';
  const sit::UniqueDir directory{::opendir(server_root)};
  if (directory == nullptr) return errno != 0 ? errno : SIT_NO_SERVER;
  Search search;
  while (const char* entry = next_candidate(directory.get())) {
    ++search.candidates;
    if (CheckNetscapeServerName(server_root, entry, server_name, &search.flags) == 0) continue;
    sit::Path instance;
    if (++search.accepted == 1 && sit::join_path(instance, {server_root, entry})) {
      stcopy(output, instance.c_str());
    }
  }
  return errno != 0 ? errno : search.result();
}

}  // extern "C"
