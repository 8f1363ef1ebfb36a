// Finding the installations.
#include <sys/stat.h>

#include <array>
#include <cstdlib>

#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "file_status.h"
#include "files.h"
#include "handles.h"
#include "pelver/installations.h"
#include "pelver/pelver.h"
#include "signals.h"
#include "situtil/lines.h"
#include "situtil/temp_file.h"

namespace sit::pelver {
namespace {

// All that was written to the stream; null when some of it was lost.
HeapText read_back(FILE* stream) noexcept {
  struct stat status {};
  const int fd = ::fileno(stream);
  if (std::fflush(stream) != 0 || std::ferror(stream) != 0 || ::fstat(fd, &status) != 0 ||
      ::lseek(fd, 0, SEEK_SET) != 0) {
    return {};
  }
  const auto size = static_cast<std::size_t>(status.st_size);
  HeapText text{static_cast<char*>(std::malloc(size + 1))};
  if (text == nullptr) return text;
  const std::size_t held = read_up_to(fd, text.get(), size);
  text.get()[held] = '\0';
  return text;
}

// Discovers into pphm; the messages go through a temporary file. Null when they are lost.
HeapText discover_through_file() noexcept {
  TempFile messages;
  const QuietWriting quiet{may_raise_signals(messages.fd())};
  UniqueFd file = messages.release();
  const UniqueFile output{file.is_open() ? ::fdopen(file.get(), "w+") : nullptr};
  if (output == nullptr) return {};
  static_cast<void>(file.release());
  find_pelloran(pphm, output.get());
  find_delvon(pphm, output.get());
  return read_back(output.get());
}

PHMVER* record_of(std::string_view directory, std::string_view failure, FILE* output) noexcept {
  PHMVER* record = new_record();
  if (record == nullptr) {
    print(output, {failure});
  } else {
    replace_field(record->dir, directory);
  }
  return record;
}

constexpr const char* kLauncher = "/usr/bin/pel";
constexpr std::string_view kNoMemory = "Failed allocating memory for Pelloran version\n";

void discover_through_environment(const char* value, PHMVER*& list, FILE* output) noexcept {
  print(output, {"Using PHM: ", value, "\n"});
  PHMVER* record = record_of(value, kNoMemory, output);
  if (record == nullptr) return;
  list = record;
  read_version(*record, output);
}

// The directory that the launcher script gives PHM in its second line, behind ten characters and
// up to a "}". False when it has none there.
bool find_launcher_value(std::string_view script, std::string_view& value) noexcept {
  constexpr std::size_t kAssignment = 10;
  const std::size_t newline = script.find('\n');
  if (newline == std::string_view::npos) return false;
  const std::size_t start = newline + 1 + kAssignment;
  if (start >= script.size()) return false;
  const std::string_view line = tail(script, start);
  const std::size_t end = line.find_first_of("}\n");
  if (end == std::string_view::npos || line[end] == '\n') return false;
  value = up_to_nul(head(line, end));
  return true;
}

void discover_through_launcher(PHMVER*& list, FILE* output) noexcept {
  LineReader launcher{kLauncher};
  if (launcher.error() != 0) {
    print(output, {"Please set the PHM environment variable and execute again\n"});
    return;
  }
  print(output, {"Extracting PHM from ", kLauncher, "\n"});
  std::array<char, 255> bytes{};
  std::string_view value;
  if (!find_launcher_value(launcher.read_beginning(bytes), value)) {
    print(output, {"Unable to locate PHM in ", kLauncher, "\n"});
    return;
  }
  PHMVER* record = record_of(value, kNoMemory, output);
  if (record == nullptr) return;
  print(output, {"PHM is ", value, "\n"});
  list = record;
  read_version(*record, output);
}

}  // namespace

HeapText discover() noexcept {
  HeapText messages = discover_through_file();
  if (messages == nullptr) messages = duplicate("");
  return messages;
}

void find_pelloran(PHMVER*& list, FILE* output) noexcept {
  if (const char* value = std::getenv("PHM"); value != nullptr) {
    discover_through_environment(value, list, output);
    return;
  }
  print(output, {"No PHM env var set\n"});
  discover_through_launcher(list, output);
}

void find_delvon(PHMVER*& list, FILE* output) noexcept {
  const char* init_file = std::getenv("DELVONINIT");
  if (init_file == nullptr) return;
  if (!exists(init_file)) {
    print(output, {"Found DELVONINIT, ", init_file, " does not exist\n\n"});
    return;
  }
  LineText directory;
  if (read_install_directory(init_file, directory) != 0) {
    print(output,
          {"Found DELVONINIT, unable to extract delvonInstallDir from ", init_file, "\n\n"});
    return;
  }
  print(output, {"Using DELVONINIT: ", init_file, "\n"});
  PHMVER* record = record_of(
      directory.view(), "FATAL ERROR: Failed to allocate memory to store Delvon info\n\n", output);
  if (record == nullptr) return;
  replace_field(record->initFile, init_file);
  record->flags |= PK_MONITOR;
  append_to_list(list, record);
  read_version(*record, output);
  const PHMVER* owner =
      Installations{list}.find([](const PHMVER& other) { return belongs_to(other, SEL_PRODUCT); });
  if (owner != nullptr && owner->version != nullptr) {
    replace_field(record->pelVersion, owner->version);
  }
}

int read_install_directory(const char* init_file, LineText& directory) noexcept {
  constexpr std::string_view kAssignment = "SET delvonInstallDir=";
  LineReader reader{init_file};
  if (reader.error() != 0) return reader.error();
  for (Line line; reader.next(line);) {
    if (!line.content().starts_with(kAssignment)) continue;
    directory = line_text(tail(line.content(), kAssignment.size()));
    break;
  }
  return directory.empty() ? 1 : 0;
}

}  // namespace sit::pelver
