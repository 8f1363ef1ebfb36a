// Reading an installation's version: from its version library, else from its version file.
#include <array>

#include "commfile.h"
#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "file_status.h"
#include "pelver/installations.h"
#include "pelver/keys.h"
#include "pelver/pelver.h"
#include "situtil/lines.h"
#include "situtil/path.h"

namespace sit::pelver {
namespace {

constexpr std::size_t kVersionFileBytes = 80;

// A framework installation of the first generation keeps its version under a name of its own.
bool is_early_framework(const PHMVER& record) noexcept {
  return is_framework(record) && text_of(record.version).starts_with('1');
}

// A version file, and what its messages call the product.
struct VersionFile {
  std::string_view name;
  std::string_view product;
};

VersionFile version_file_of(const PHMVER& record) noexcept {
  if (is_early_framework(record)) return {"embversion", "Ambrelis"};
  return {is_monitor(record) ? "delvonversion" : "version", product_name(record)};
}

void clear_numbers(PHMVER& record) noexcept {
  record.major = 0;
  record.minor = 0;
  record.servicePack = 0;
  record.servicePackMinor = 0;
  record.build = 0;
  replace_field(record.maintLevel, "");
}

bool begins_with_version_word(std::string_view text) noexcept {
  return starts_ignoring_case(text, "ver") || starts_ignoring_case(text, "rel");
}

// Where the word ver or rel begins, in any case.
std::size_t find_version_word(std::string_view text) noexcept {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (begins_with_version_word(tail(text, i))) return i;
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
  return head(tail(text, start), end - start);
}

// Joins `name` to the record's directory. When the path does not fit, says so in `output`.
bool path_in_installation(const PHMVER& record, std::string_view name, Path& path,
                          FILE* output) noexcept {
  const std::string_view directory = text_of(record.dir);
  if (join_path(path, {directory, name})) return true;
  print(output, {TooLong{"The path", {directory, "/", name}, Path::kMaxLength}.view()});
  return false;
}

}  // namespace

std::string_view product_name(const PHMVER& record) noexcept {
  return is_monitor(record) ? "Delvon" : "Pelloran";
}

void print(FILE* output, std::initializer_list<std::string_view> pieces) noexcept {
  if (output == nullptr) return;
  for (const std::string_view piece : pieces) std::fwrite(piece.data(), 1, piece.size(), output);
}

void read_version(PHMVER& record, FILE* output) noexcept {
  Path library;
  if (!is_framework(record) &&
      path_in_installation(record, "bin/versioninfo.dll", library, output) &&
      exists(library.c_str()) && read_version_library(record, library.c_str(), output)) {
    return;
  }
  read_version_file(record, output);
}

void read_version_file(PHMVER& record, FILE* output) noexcept {
  clear_numbers(record);
  const VersionFile source = version_file_of(record);
  Path path;
  if (!path_in_installation(record, source.name, path, output)) {
    print(output, {"\n"});
    return;
  }
  LineReader file{path.c_str()};
  if (file.error() != 0) {
    print(output, {"Unable to open version file ", path.view(), "\n\n"});
    return;
  }
  std::array<char, kVersionFileBytes> bytes{};
  const std::string_view text = file.read_beginning(bytes);

  const std::size_t word = find_version_word(text);
  const std::string_view number =
      word == std::string_view::npos ? std::string_view{} : find_version_number(text, word);
  if (number.empty()) {
    const std::string_view missing = word == std::string_view::npos ? "string" : "number";
    print(output, {"Unable to find version ", missing, " in '", up_to_nul(text),
                   "'\nExtracted from ", path.view(), "\n\n"});
    return;
  }
  replace_field(record.fullVersion, up_to_nul(number));
  if (record.version == nullptr) replace_field(record.version, up_to_nul(number));

  if (source.name == "version") parse_version(text_of(record.version), record);
  print(output, {source.product, " Version: ", up_to_nul(number), "\nExtracted from ", path.view(),
                 "\n\n"});
}

}  // namespace sit::pelver
