// The version library of an installation: the product's own code, called by name.
#include <array>
#include <cstdlib>
#include <string_view>

#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "pelver/pelver.h"
#include "sit/codes.h"
#include "sit/commutils.h"
#include "situtil/library.h"

namespace {

constexpr int kTextCapacity = 255;
constexpr short kSuccess = 1;

using TextGetter = short (*)(char* buffer, int capacity);
using NumberGetter = short (*)();

// What a text getter gave: null when it is missing or does not succeed.
struct Answer {
  bool asked = false;
  sit::HeapText text;
};

Answer ask_text(sit::Library& library, const char* getter) noexcept {
  Answer answer;
  const auto get = library.entry_point<TextGetter>(getter);
  if (get == nullptr) return answer;
  answer.asked = true;
  // Room for a terminator behind a text of full capacity.
  std::array<char, SIT_PATH_BYTES> buffer{};
  const bool succeeded = get(buffer.data(), kTextCapacity) == kSuccess;
  buffer.back() = '\0';
  if (succeeded) answer.text = sit::duplicate(buffer.data());
  return answer;
}

// The number of a getter; 0 when it is missing.
short ask_number(sit::Library& library, const char* getter) noexcept {
  const auto get = library.entry_point<NumberGetter>(getter);
  return get == nullptr ? short{0} : get();
}

struct Decimal {
  explicit Decimal(short value) noexcept { intoal(value, digits.data()); }
  [[nodiscard]] std::string_view view() const noexcept { return digits.data(); }
  std::array<char, 12> digits{};
};

std::string_view first_word(std::string_view text) noexcept {
  const std::string_view word = sit::without_leading_blanks(text);
  return sit::head(word, word.find(' '));
}

void take_versions(sit::Library& library, PHMVER& record) noexcept {
  Answer version = ask_text(library, "getVersion");
  if (record.version == nullptr) record.version = version.text.release();
  const Answer full_version = ask_text(library, "getFullVersion");
  if (!full_version.asked) return;
  std::free(record.fullVersion);
  record.fullVersion = nullptr;
  const std::string_view word = first_word(sit::text_of(full_version.text.get()));
  if (!word.empty()) sit::replace_field(record.fullVersion, word);
}

void take_numbers(sit::Library& library, PHMVER& record) noexcept {
  record.major = ask_number(library, "getMajorNumber");
  record.minor = ask_number(library, "getMinorNumber");
  record.build = ask_number(library, "getBuildNumber");
  record.servicePack = ask_number(library, "getServicePackNumber");
  record.servicePackMinor = ask_number(library, "getTemporaryFixNumber");
  const Answer level = ask_text(library, "getMaintenanceLevel");
  sit::replace_field(record.maintLevel, sit::text_of(level.text.get()));
}

}  // namespace

extern "C" int getPelVerInfoDLL(PHMVER* record, const char* path, FILE* output) noexcept {
  if (record == nullptr || path == nullptr) return 0;
  sit::Library library{path};
  if (!library.is_loaded()) {
    sit::print(output, {"Failed to load library ", path, "\n"});
    return 0;
  }
  take_versions(library, *record);
  take_numbers(library, *record);
  if (record->fullVersion == nullptr && record->version != nullptr) {
    sit::replace_field(record->fullVersion, record->version);
  }
  if (record->fullVersion != nullptr) {
    const std::string_view whole = path;
    sit::print(output, {sit::product_name(*record), " Version: ", record->fullVersion,
                        "\nExtracted from ", sit::tail(whole, whole.rfind('/') + 1), "\n"});
  } else {
    sit::print(output, {"Unable to extract version from ", path, "\n"});
  }
  sit::print(output, {"Major version: ", Decimal{record->major}.view(),
                      "\nMinor version: ", Decimal{record->minor}.view(),
                      "\nMaint Level: ", sit::text_of(record->maintLevel), "\n"});
  sit::print(output, {"Service Pack: ", Decimal{record->servicePack}.view(),
                      "\nService Pack Minor Level: ", Decimal{record->servicePackMinor}.view(),
                      "\nBuild Number: ", Decimal{record->build}.view(), "\n"});
  library.unload();
  sit::print(output, {"\n"});
  return 1;
}
