// Finding the installations.
#include <sys/stat.h>

#include <array>
#include <cstdlib>

#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "files.h"
#include "handles.h"
#include "pelver/pelver.h"
#include "signals.h"
#include "sit/commutils.h"
#include "sit/situtil.h"
#include "situtil/lines.h"
#include "situtil/temp_file.h"

namespace {

// All that was written to the stream; null when some of it was lost.
sit::HeapText read_back(FILE* stream) noexcept {
  struct stat status {};
  const int fd = ::fileno(stream);
  if (std::fflush(stream) != 0 || std::ferror(stream) != 0 || ::fstat(fd, &status) != 0 ||
      ::lseek(fd, 0, SEEK_SET) != 0) {
    return {};
  }
  const auto size = static_cast<std::size_t>(status.st_size);
  sit::HeapText text{static_cast<char*>(std::malloc(size + 1))};
  if (text == nullptr) return text;
  const std::size_t held = sit::read_up_to(fd, text.get(), size);
  text.get()[held] = '\0';
  return text;
}

// Discovers into pphm; the messages go through a temporary file. Null when they are lost.
sit::HeapText discover() noexcept {
  sit::TempFile messages;
  const sit::QuietWriting quiet{sit::may_raise_signals(messages.fd())};
  sit::UniqueFd file = messages.release();
  const sit::UniqueFile output{file.is_open() ? ::fdopen(file.get(), "w+") : nullptr};
  if (output == nullptr) return {};
  static_cast<void>(file.release());
  getPelUnixVersions(&pphm, output.get());
  getDelvonUnixVersions(&pphm, output.get());
  return read_back(output.get());
}

PHMVER* new_record(std::string_view directory, std::string_view failure, FILE* output) noexcept {
  PHMVER* record = createPHMVER();
  if (record == nullptr) {
    sit::print(output, {failure});
  } else {
    sit::replace_field(record->dir, directory);
  }
  return record;
}

constexpr std::string_view kNoMemory = "Failed allocating memory for Pelloran version\n";

void discover_through_environment(const char* value, PHMVER** list, FILE* output) noexcept {
  sit::print(output, {"Using PHM: ", value, "\n"});
  PHMVER* record = new_record(value, kNoMemory, output);
  if (record == nullptr) return;
  *list = record;
  getPelVerInfo(record, output);
}

// The directory that the launcher script gives PHM in its second line, behind ten characters and
// up to a "}". False when it has none there.
bool find_launcher_value(std::string_view script, std::string_view& value) noexcept {
  constexpr std::size_t kAssignment = 10;
  const std::size_t newline = script.find('\n');
  if (newline == std::string_view::npos) return false;
  const std::size_t start = newline + 1 + kAssignment;
  if (start >= script.size()) return false;
  const std::string_view line = sit::tail(script, start);
  const std::size_t end = line.find_first_of("}\n");
  if (end == std::string_view::npos || line[end] == '\n') return false;
  value = sit::up_to_nul(sit::head(line, end));
  return true;
}

void discover_through_launcher(PHMVER** list, FILE* output) noexcept {
  sit::LineReader launcher{sit::kLauncher};
  if (launcher.error() != 0) {
    sit::print(output, {"Please set the PHM environment variable and execute again\n"});
    return;
  }
  sit::print(output, {"Extracting PHM from ", sit::kLauncher, "\n"});
  std::array<char, 255> bytes{};
  std::string_view value;
  if (!find_launcher_value(launcher.read_beginning(bytes), value)) {
    sit::print(output, {"Unable to locate PHM in ", sit::kLauncher, "\n"});
    return;
  }
  PHMVER* record = new_record(value, kNoMemory, output);
  if (record == nullptr) return;
  sit::print(output, {"PHM is ", value, "\n"});
  *list = record;
  getPelVerInfo(record, output);
}

const PHMVER* first_plain_installation(const PHMVER* list) noexcept {
  while (list != nullptr && IsCorrectProduct(list, SEL_PRODUCT) == 0) list = list->next;
  return list;
}

}  // namespace

extern "C" {

char* GetPhmVers() noexcept {
  sit::HeapText messages = discover();
  if (messages == nullptr) messages = sit::duplicate("");
  return messages.release();
}

void getPelUnixVersions(PHMVER** list, FILE* output) noexcept {
  if (list == nullptr) return;
  if (const char* value = std::getenv("PHM"); value != nullptr) {
    discover_through_environment(value, list, output);
    return;
  }
  sit::print(output, {"No PHM env var set\n"});
  discover_through_launcher(list, output);
}

void getDelvonUnixVersions(PHMVER** list, FILE* output) noexcept {
  const char* init_file = std::getenv("DELVONINIT");
  if (list == nullptr || init_file == nullptr) return;
  if (FileExists(init_file) == 0) {
    sit::print(output, {"Found DELVONINIT, ", init_file, " does not exist\n\n"});
    return;
  }
  std::array<char, SIT_PATH_BYTES> directory{};
  if (GetDelvonTarg(init_file, directory.data()) != 0) {
    sit::print(output,
               {"Found DELVONINIT, unable to extract delvonInstallDir from ", init_file, "\n\n"});
    return;
  }
  sit::print(output, {"Using DELVONINIT: ", init_file, "\n"});
  PHMVER* record = new_record(
      directory.data(), "FATAL ERROR: Failed to allocate memory to store Delvon info\n\n", output);
  if (record == nullptr) return;
  sit::replace_field(record->initFile, init_file);
  record->flags |= PK_MONITOR;
  addPHMVERToList(list, record);
  getPelVerInfo(record, output);
  const PHMVER* owner = first_plain_installation(*list);
  if (owner != nullptr && owner->version != nullptr) {
    sit::replace_field(record->pelVersion, owner->version);
  }
}

int GetDelvonTarg(const char* init_file, char* buffer) noexcept {
  constexpr std::string_view kAssignment = "SET delvonInstallDir=";
  if (init_file == nullptr || buffer == nullptr) return 1;
  buffer[0] = '\0';
  sit::LineReader reader{init_file};
  if (reader.error() != 0) return reader.error();
  for (sit::Line line; reader.next(line);) {
    const std::string_view setting = line.content();
    if (!setting.starts_with(kAssignment)) continue;
    stcopy(buffer, sit::line_text(sit::tail(setting, kAssignment.size())).c_str());
    return buffer[0] != '\0' ? 0 : 1;
  }
  return 1;
}

}  // extern "C"
