#include "pelsec.h"

#include <dirent.h>

#include <array>
#include <cstdarg>
#include <string_view>

#include "commfile.h"
#include "commutils/message.h"
#include "commutils/views.h"
#include "file_status.h"
#include "handles.h"
#include "sit/codes.h"
#include "sit/pelsec.h"
#include "situtil/command.h"
#include "situtil/path.h"

namespace sit::pelsec {
namespace {

constexpr std::size_t kCommandLength = 255;

struct Message {
  std::array<char, SIT_MESSAGE_BYTES> text{};
};

Message formatted(const char* format, ...) noexcept {
  Message message;
  std::va_list arguments;
  va_start(arguments, format);
  format_message(message.text.data(), format, arguments);
  va_end(arguments);
  return message;
}

bool tool_path(const PHMVER& record, std::string_view tool, Path& path) noexcept {
  return compose_path(path, {text_of(record.dir), "/bin//", tool});
}

bool store_path(const PHMVER& record, std::string_view store, Path& path) noexcept {
  return compose_path(path, {text_of(record.dir), "/", store});
}

void list_certificate(const char* tool, const char* store, const char* name) noexcept {
  log("Listing of %s\n\n", name);
  const auto word = [](const char* text) { return Command{}.word(text); };
  const Message stated = formatted(szSSLCTemp, tool, store, '/', name);
  const Message written =
      formatted(szSSLCTemp, word(tool).c_str(), word(store).c_str(), '/', word(name).c_str());
  Command{kCommandLength}.written(stated.text.data(), written.text.data()).run();
  log("\n\n");
}

void write_certificate_files(const PHMVER& record) noexcept {
  log_title("Certificates");
  Path tool;
  Path store;
  if (!tool_path(record, "sslc", tool) || !store_path(record, "certs", store)) return;
  if (!exists(store.c_str())) {
    log("Certificate Store %s does not exist\n\n", store.c_str());
  } else if (!exists(tool.c_str())) {
    log("%s does not exist, cannot list certificates\n\n", tool.c_str());
  } else {
    log("Listing of certificates in %s\n\n", store.c_str());
    list_certificates(tool.c_str(), store.c_str());
  }
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

void write_whole_store(const PHMVER& record, const WholeStore& whole) noexcept {
  Path store;
  Path tool;
  log_title(whole.title);
  if (!store_path(record, whole.directory, store)) return;
  if (!exists(store.c_str())) {
    log_computed(whole.missing, store.c_str());
    return;
  }
  if (!tool_path(record, whole.tool, tool)) return;
  if (!exists(tool.c_str())) {
    log("%s does not exist, cannot list %s\n", tool.c_str(), whole.entries);
    return;
  }
  log("Listing of %s in %s\n\n", whole.entries, store.c_str());
  Command{kCommandLength}.word(tool.view()).raw(" -list -verbose").run();
}

}  // namespace

StoreFormat store_format(const PHMVER& record) noexcept {
  constexpr int kLastUnreported = 8;
  constexpr int kTen = 10;
  if (record.major <= kLastUnreported) return StoreFormat::kNone;
  if (record.major < kTen) return StoreFormat::kBefore100B;
  if (record.major > kTen || record.minor >= 1) return StoreFormat::kFrom100B;
  const std::string_view level = text_of(record.maintLevel);
  const bool is_past_a = !level.empty() && static_cast<unsigned char>(level.front()) > 'A';
  return is_past_a ? StoreFormat::kFrom100B : StoreFormat::kBefore100B;
}

void write_stores(const PHMVER& record, StoreFormat format) noexcept {
  if (format == StoreFormat::kBefore100B) write_certificate_files(record);
  if (format != StoreFormat::kFrom100B) return;
  for (const WholeStore& whole : kWholeStores) write_whole_store(record, whole);
}

void list_certificates(const char* tool, const char* store) noexcept {
  const UniqueDir directory{::opendir(store)};
  if (directory == nullptr) return;
  while (const dirent* entry = ::readdir(directory.get())) {
    const std::string_view name = entry->d_name;
    if (name.ends_with(".0")) list_certificate(tool, store, entry->d_name);
  }
}

}  // namespace sit::pelsec
