// Reading an installation's version: from its version library, else from its version file.
#include <array>

#include "commfile.h"
#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "pelver/pelver.h"
#include "sit/situtil.h"
#include "situtil/lines.h"

namespace {

constexpr std::size_t kVersionFileBytes = 80;

bool is_monitor(const PHMVER& record) noexcept { return (record.flags & PK_MONITOR_MASK) != 0; }

// A framework installation of the first generation keeps its version under a name of its own.
bool is_early_framework(const PHMVER& record) noexcept {
  return (record.flags & PK_FRAMEWORK) != 0 && sit::text_of(record.version).starts_with('1');
}

// A version file, and what its messages call the product.
struct VersionFile {
  std::string_view name;
  std::string_view product;
};

VersionFile version_file_of(const PHMVER& record) noexcept {
  if (is_early_framework(record)) return {"embversion", "Ambrelis"};
  return {is_monitor(record) ? "delvonversion" : "version", sit::product_name(record)};
}

void clear_numbers(PHMVER& record) noexcept {
  record.major = 0;
  record.minor = 0;
  record.servicePack = 0;
  record.servicePackMinor = 0;
  record.build = 0;
  sit::replace_field(record.maintLevel, "");
}

bool begins_with_version_word(std::string_view text) noexcept {
  return sit::starts_ignoring_case(text, "ver") || sit::starts_ignoring_case(text, "rel");
}

// Where the word ver or rel begins, in any case.
std::size_t find_version_word(std::string_view text) noexcept {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (begins_with_version_word(sit::tail(text, i))) return i;
  }
  return std::string_view::npos;
}

// The text between the first space from `from` on and the next one; empty when there is none.
std::string_view find_version_number(std::string_view text, std::size_t from) noexcept {
  const std::size_t space = text.find(' ', from);
  if (space == std::string_view::npos) return {};
  const std::size_t start = space + 1;
  const std::size_t end = text.find(' ', start + 1);
  if (end >= kVersionFileBytes - 1) return {};
  return sit::head(sit::tail(text, start), end - start);
}

}  // namespace

namespace sit {

std::string_view product_name(const PHMVER& record) noexcept {
  return is_monitor(record) ? "Delvon" : "Pelloran";
}

void print(FILE* output, std::initializer_list<std::string_view> pieces) noexcept {
  if (output == nullptr) return;
  for (const std::string_view piece : pieces) std::fwrite(piece.data(), 1, piece.size(), output);
}

bool path_in_installation(const PHMVER& record, std::string_view name, Path& path,
                          FILE* output) noexcept {
  const std::string_view directory = text_of(record.dir);
  if (join_path(path, {directory, name})) return true;
  print(output, {TooLong{"The path", {directory, "/", name}, Path::kMaxLength}.c_str()});
  return false;
}

}  // namespace sit

extern "C" {

void getPelVerInfo(PHMVER* record, FILE* output) noexcept {
  if (record == nullptr) return;
  sit::Path library;
  if ((record->flags & PK_FRAMEWORK) == 0 &&
      sit::path_in_installation(*record, "bin/versioninfo.dll", library, output) &&
      FileExists(library.c_str()) != 0 && getPelVerInfoDLL(record, library.c_str(), output) != 0) {
    return;
  }
  getPelVerInfoFile(record, output);
}

void getPelVerInfoFile(PHMVER* record, FILE* output) noexcept {
  if (record == nullptr) return;
  clear_numbers(*record);
  const VersionFile source = version_file_of(*record);
  sit::Path path;
  if (!sit::path_in_installation(*record, source.name, path, output)) {
    sit::print(output, {"\n"});
    return;
  }
  sit::LineReader file{path.c_str()};
  if (file.error() != 0) {
    sit::print(output, {"Unable to open version file ", path.view(), "\n\n"});
    return;
  }
  std::array<char, kVersionFileBytes> bytes{};
  const std::string_view text = file.read_beginning(bytes);

  const std::size_t word = find_version_word(text);
  const std::string_view number =
      word == std::string_view::npos ? std::string_view{} : find_version_number(text, word);
  if (number.empty()) {
    const std::string_view missing = word == std::string_view::npos ? "string" : "number";
    sit::print(output, {"Unable to find version ", missing, " in '", sit::up_to_nul(text),
                        "'\nExtracted from ", path.view(), "\n\n"});
    return;
  }
  sit::replace_field(record->fullVersion, sit::up_to_nul(number));
  if (record->version == nullptr) sit::replace_field(record->version, sit::up_to_nul(number));

  if (source.name == "version") ParseVerString(record->version, record);
  sit::print(output, {source.product, " Version: ", sit::up_to_nul(number), "\nExtracted from ",
                      path.view(), "\n\n"});
}

}  // extern "C"
