// The version library of an installation: the product's own code, called by name.
#include <array>
#include <cstdlib>
#include <string_view>

#include "commutils/heap_text.h"
#include "commutils/numbers.h"
#include "commutils/views.h"
#include "pelver/pelver.h"
#include "sit/codes.h"
#include "situtil/library.h"
#include "situtil/path.h"

namespace sit::pelver {
namespace {

constexpr int kTextCapacity = 255;
constexpr short kSuccess = 1;

using TextGetter = short (*)(char* buffer, int capacity);
using NumberGetter = short (*)();

// What a text getter gave: null when it is missing or does not succeed.
struct Answer {
  bool asked = false;
  HeapText text;
};

Answer ask_text(Library& library, const char* getter) noexcept {
  Answer answer;
  const auto get = library.entry_point<TextGetter>(getter);
  if (get == nullptr) return answer;
  answer.asked = true;
  // Room for a terminator behind a text of full capacity.
  std::array<char, SIT_PATH_BYTES> buffer{};
  const bool succeeded = get(buffer.data(), kTextCapacity) == kSuccess;
  buffer.back() = '\0';
  if (succeeded) answer.text = duplicate(buffer.data());
  return answer;
}

// The number of a getter; 0 when it is missing.
short ask_number(Library& library, const char* getter) noexcept {
  const auto get = library.entry_point<NumberGetter>(getter);
  return get == nullptr ? short{0} : get();
}

std::string_view first_word(std::string_view text) noexcept {
  const std::string_view word = without_leading_blanks(text);
  return head(word, word.find(' '));
}

void take_versions(Library& library, PHMVER& record) noexcept {
  Answer version = ask_text(library, "getVersion");
  if (record.version == nullptr) record.version = version.text.release();
  const Answer full_version = ask_text(library, "getFullVersion");
  if (!full_version.asked) return;
  std::free(record.fullVersion);
  record.fullVersion = nullptr;
  const std::string_view word = first_word(text_of(full_version.text.get()));
  if (!word.empty()) replace_field(record.fullVersion, word);
}

void take_numbers(Library& library, PHMVER& record) noexcept {
  record.major = ask_number(library, "getMajorNumber");
  record.minor = ask_number(library, "getMinorNumber");
  record.build = ask_number(library, "getBuildNumber");
  record.servicePack = ask_number(library, "getServicePackNumber");
  record.servicePackMinor = ask_number(library, "getTemporaryFixNumber");
  const Answer level = ask_text(library, "getMaintenanceLevel");
  replace_field(record.maintLevel, text_of(level.text.get()));
}

}  // namespace

bool read_version_library(PHMVER& record, const char* path, FILE* output) noexcept {
  Library library{path};
  if (!library.is_loaded()) {
    print(output, {"Failed to load library ", path, "\n"});
    return false;
  }
  take_versions(library, record);
  take_numbers(library, record);
  if (record.fullVersion == nullptr && record.version != nullptr) {
    replace_field(record.fullVersion, record.version);
  }
  if (record.fullVersion != nullptr) {
    print(output, {product_name(record), " Version: ", record.fullVersion, "\nExtracted from ",
                   base_name(path), "\n"});
  } else {
    print(output, {"Unable to extract version from ", path, "\n"});
  }
  const auto number = [](std::int16_t value) { return NumberText::decimal(value); };
  print(output, {"Major version: ", number(record.major).view(), "\nMinor version: ",
                 number(record.minor).view(), "\nMaint Level: ", text_of(record.maintLevel), "\n"});
  print(output, {"Service Pack: ", number(record.servicePack).view(),
                 "\nService Pack Minor Level: ", number(record.servicePackMinor).view(),
                 "\nBuild Number: ", number(record.build).view(), "\n"});
  library.unload();
  print(output, {"\n"});
  return true;
}

}  // namespace sit::pelver
