// Certificate and key stores: the installation's own tools list them.
#include "sit/pelsec.h"

#include <dirent.h>

#include <array>
#include <cstdarg>
#include <string_view>

#include "commfile.h"
#include "commutils/bounded_text.h"
#include "commutils/views.h"
#include "handles.h"
#include "sit/codes.h"
#include "sit/commutils.h"
#include "sit/situtil.h"
#include "situtil/command.h"
#include "situtil/path.h"

extern "C" {
char szSSLCTemp[] = "%s x509 -text -in %s%c%s";
}

namespace {

constexpr std::size_t kCommandLength = 255;

struct Message {
  std::array<char, SIT_MESSAGE_BYTES> text{};
};

Message formatted(const char* format, ...) noexcept {
  Message message;
  std::va_list arguments;
  va_start(arguments, format);
  msgsub(message.text.data(), format, arguments);
  va_end(arguments);
  return message;
}

bool tool_path(const PHMVER& record, std::string_view tool, sit::Path& path) noexcept {
  return sit::compose(path, "The path", {sit::text_of(record.dir), "/bin//", tool});
}

bool store_path(const PHMVER& record, std::string_view store, sit::Path& path) noexcept {
  return sit::compose(path, "The path", {sit::text_of(record.dir), "/", store});
}

void list_certificate(const char* tool, const char* store, const char* name) noexcept {
  LogMsg("Listing of %s\n\n", name);
  const auto word = [](const char* text) { return sit::Command{}.word(text); };
  const Message stated = formatted(szSSLCTemp, tool, store, '/', name);
  const Message written =
      formatted(szSSLCTemp, word(tool).c_str(), word(store).c_str(), '/', word(name).c_str());
  sit::Command command{kCommandLength};
  command.written(stated.text.data(), written.text.data()).run();
  LogMsg("\n\n");
}

// A store that its tool lists as a whole, finding it by itself.
struct WholeStore {
  const char* title;
  const char* entries;
  std::string_view directory;
  std::string_view tool;
  const char* missing;  // takes the store
};
constexpr WholeStore kWholeStores[] = {
    {"Certificates", "certificates", "certs", "certutil",
     "Certificate Store %s does not exist\n\n"},
    {"Keys", "keys", "keys", "pkiutil", "Key Store %s does not exist\n\n"},
};

void list_store(const char* entries, const sit::Path& tool, const sit::Path& store) noexcept {
  constexpr std::string_view kOptions = " -list -verbose";
  LogMsg("Listing of %s in %s\n\n", entries, store.c_str());
  sit::Command command{kCommandLength};
  command.word(tool.view()).raw(kOptions).run();
}

void report_store(const PHMVER& record, const WholeStore& whole) noexcept {
  sit::Path store;
  sit::Path tool;
  LogTitle(whole.title);
  if (!store_path(record, whole.directory, store)) return;
  if (FileExists(store.c_str()) == 0) {
    sit::log_computed(whole.missing, store.c_str());
    return;
  }
  if (!tool_path(record, whole.tool, tool)) return;
  if (FileExists(tool.c_str()) == 0) {
    LogMsg("%s does not exist, cannot list %s\n", tool.c_str(), whole.entries);
  } else {
    list_store(whole.entries, tool, store);
  }
}

}  // namespace

extern "C" {

int LogSecurityInfoPre100B(PHMVER* record) noexcept {
  if (record == nullptr) return 0;
  LogTitle("Certificates");
  sit::Path tool;
  sit::Path store;
  if (!tool_path(*record, "sslc", tool) || !store_path(*record, "certs", store)) return 0;
  if (FileExists(store.c_str()) == 0) {
    LogMsg("Certificate Store %s does not exist\n\n", store.c_str());
  } else if (FileExists(tool.c_str()) == 0) {
    LogMsg("%s does not exist, cannot list certificates\n\n", tool.c_str());
  } else {
    LogMsg("Listing of certificates in %s\n\n", store.c_str());
    getDirCertInfo(tool.c_str(), store.c_str());
  }
  return 0;
}

int LogSecurityInfo100B(PHMVER* record) noexcept {
  if (record == nullptr) return 0;
  for (const WholeStore& whole : kWholeStores) report_store(*record, whole);
  return 0;
}

int getDirCertInfo(const char* tool, const char* store) noexcept {
  if (tool == nullptr || store == nullptr) return 0;
  const sit::UniqueDir directory{::opendir(store)};
  if (directory == nullptr) return 0;
  while (const dirent* entry = ::readdir(directory.get())) {
    const std::string_view name = entry->d_name;
    if (name.ends_with(".0")) list_certificate(tool, store, entry->d_name);
  }
  return 0;
}

}  // extern "C"
