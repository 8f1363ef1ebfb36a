// The version library of an installation: the product's own code, called by name.
#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/stat.h>

#include <array>
#include <bit>
#include <cstring>

#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "files.h"
#include "handles.h"
#include "pelver/pelver.h"
#include "sit/codes.h"
#include "sit/commutils.h"

namespace {

constexpr int kTextCapacity = 255;
constexpr short kSuccess = 1;

using TextGetter = short (*)(char* buffer, int capacity);
using NumberGetter = short (*)();

class Library {
 public:
  explicit Library(const char* path) noexcept
      : handle_(sit::is_whole_library(path) ? ::dlopen(path, RTLD_LAZY | RTLD_GLOBAL) : nullptr) {}
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  ~Library() { unload(); }

  [[nodiscard]] bool is_loaded() const noexcept { return handle_ != nullptr; }

  void unload() noexcept {
    if (handle_ != nullptr) ::dlclose(handle_);
    handle_ = nullptr;
  }

  [[nodiscard]] bool has(const char* getter) const noexcept {
    return ::dlsym(handle_, getter) != nullptr;
  }

  // The text of a getter; null when it is missing or does not succeed.
  [[nodiscard]] sit::HeapText text(const char* getter) const noexcept {
    const auto get = entry_point<TextGetter>(getter);
    // Room for a terminator behind a text of full capacity.
    std::array<char, SIT_PATH_BYTES> buffer{};
    if (get == nullptr || get(buffer.data(), kTextCapacity) != kSuccess) return {};
    buffer.back() = '\0';
    return sit::duplicate(buffer.data());
  }

  // The number of a getter; 0 when it is missing.
  [[nodiscard]] short number(const char* getter) const noexcept {
    const auto get = entry_point<NumberGetter>(getter);
    return get == nullptr ? short{0} : get();
  }

 private:
  template <typename Function>
  [[nodiscard]] Function entry_point(const char* name) const noexcept {
    return std::bit_cast<Function>(::dlsym(handle_, name));
  }

  void* handle_;
};

struct Decimal {
  explicit Decimal(short value) noexcept { intoal(value, digits.data()); }
  [[nodiscard]] std::string_view view() const noexcept { return digits.data(); }
  std::array<char, 12> digits{};
};

std::string_view first_word(std::string_view text) noexcept {
  const std::string_view word = sit::without_leading_blanks(text);
  return sit::head(word, word.find(' '));
}

void take_versions(const Library& library, PHMVER& record) noexcept {
  sit::HeapText version = library.text("getVersion");
  if (record.version == nullptr) record.version = version.release();
  if (!library.has("getFullVersion")) return;
  const sit::HeapText full_version = library.text("getFullVersion");
  std::free(record.fullVersion);
  record.fullVersion = nullptr;
  const std::string_view word = first_word(sit::text_of(full_version.get()));
  if (!word.empty()) sit::replace_field(record.fullVersion, word);
}

void take_numbers(const Library& library, PHMVER& record) noexcept {
  record.major = library.number("getMajorNumber");
  record.minor = library.number("getMinorNumber");
  record.build = library.number("getBuildNumber");
  record.servicePack = library.number("getServicePackNumber");
  record.servicePackMinor = library.number("getTemporaryFixNumber");
  const sit::HeapText level = library.text("getMaintenanceLevel");
  sit::replace_field(record.maintLevel, sit::text_of(level.get()));
}

bool read_at(int fd, off_t offset, void* into, std::size_t count) noexcept {
  return ::pread(fd, into, count, offset) == static_cast<ssize_t>(count);
}

bool is_library_header(const ElfW(Ehdr) & header) noexcept {
  return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_type == ET_DYN &&
         header.e_phentsize == sizeof(ElfW(Phdr));
}

}  // namespace

bool sit::is_whole_library(const char* path) noexcept {
  const UniqueFd file = open_for_reading(path);
  struct stat status {};
  ElfW(Ehdr) header{};
  if (!file.is_open() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
      !read_at(file.get(), 0, &header, sizeof header) || !is_library_header(header)) {
    return false;
  }
  const auto size = static_cast<ElfW(Off)>(status.st_size);
  for (unsigned i = 0; i < header.e_phnum; ++i) {
    ElfW(Phdr) segment{};
    const ElfW(Off) offset = header.e_phoff + i * sizeof segment;
    if (!read_at(file.get(), static_cast<off_t>(offset), &segment, sizeof segment)) return false;
    if (segment.p_offset > size || segment.p_filesz > size - segment.p_offset) return false;
  }
  return true;
}

extern "C" int getPelVerInfoDLL(PHMVER* record, const char* path, FILE* output) noexcept {
  if (record == nullptr || path == nullptr) return 0;
  Library library{path};
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
