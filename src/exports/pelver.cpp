#include "pelver/pelver.h"

#include <optional>

#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "pelver/installations.h"
#include "pelver/keys.h"

using namespace sit;

namespace {

// The result of AppendVerLogFile; the next call replaces it.
constinit char* last_name = nullptr;

}  // namespace

extern "C" {

constinit PHMVER* pphm = nullptr;

PHMVER* createPHMVER() noexcept { return pelver::new_record(); }

void addPHMVERToList(PHMVER** list, PHMVER* record) noexcept {
  if (list != nullptr) pelver::append_to_list(*list, record);
}

char* GetPhmVers() noexcept { return pelver::discover().release(); }

void getPelUnixVersions(PHMVER** list, FILE* output) noexcept {
  if (list != nullptr) pelver::find_pelloran(*list, output);
}

void getDelvonUnixVersions(PHMVER** list, FILE* output) noexcept {
  if (list != nullptr) pelver::find_delvon(*list, output);
}

int GetDelvonTarg(const char* init_file, char* buffer) noexcept {
  if (init_file == nullptr || buffer == nullptr) return 1;
  LineText directory;
  const int result = pelver::read_install_directory(init_file, directory);
  put_text(buffer, directory.view());
  return result;
}

void getPelVerInfo(PHMVER* record, FILE* output) noexcept {
  if (record != nullptr) pelver::read_version(*record, output);
}

int getPelVerInfoDLL(PHMVER* record, const char* path, FILE* output) noexcept {
  if (record == nullptr || path == nullptr) return 0;
  return pelver::read_version_library(*record, path, output) ? 1 : 0;
}

void getPelVerInfoFile(PHMVER* record, FILE* output) noexcept {
  if (record != nullptr) pelver::read_version_file(*record, output);
}

void ParseVerString(const char* version, PHMVER* record) noexcept {
  if (record != nullptr) pelver::parse_version(text_of(version), *record);
}

void RmPatchInfoPHM(char* version) noexcept {
  if (version != nullptr) version[pelver::release_of(version).size()] = '\0';
}

int IsCorrectProduct(const PHMVER* record, int selector) noexcept {
  return record != nullptr && pelver::belongs_to(*record, selector) ? 1 : 0;
}

const char* AppendVerLogFile(const char* version, int bitness, const char* prefix) noexcept {
  pelver::VersionedName name;
  const bool fits = name.append(text_of(prefix)) && pelver::append_version(version, bitness, name);
  return answer(last_name, fits ? std::optional{name.view()} : std::nullopt);
}

int Is64BitWindows() noexcept { return 0; }

int GetBitness(const char* version) noexcept { return pelver::bitness_named_in(version); }

}  // extern "C"
