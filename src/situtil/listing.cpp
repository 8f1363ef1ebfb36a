// Listings and copies through the shell's own tools.
#include "situtil/listing.h"

#include <sys/stat.h>

#include <cerrno>

#include "commfile.h"
#include "commutils/bounded_text.h"
#include "commutils/views.h"
#include "files.h"
#include "handles.h"
#include "sit/situtil.h"
#include "situtil/input.h"
#include "situtil/shell.h"

namespace {

constexpr std::size_t kListingLength = 255;
using Command = sit::BoundedText<512>;

// Whether a copy of the file comes to an end: it is no device and no FIFO, nor goes on without a
// size as those under /proc do.
bool has_end(std::string_view name) noexcept {
  Command path;
  static_cast<void>(path.append(name));
  const sit::UniqueFd file = sit::open_for_reading(path.c_str());
  if (!file.is_open()) return errno != EINVAL;
  struct stat status {};
  return ::fstat(file.get(), &status) == 0 && !S_ISFIFO(status.st_mode) &&
         sit::Input{file.get()}.tells_size();
}

bool all_have_end(std::string_view names) noexcept {
  for (std::string_view name = sit::take_word(names); !name.empty(); name = sit::take_word(names)) {
    if (!has_end(name)) return false;
  }
  return true;
}

}  // namespace

void sit::list_directory(std::string_view options, std::string_view directory,
                         std::size_t max_length) noexcept {
  const std::initializer_list<std::string_view> words{"ls ", options, " \"", directory, "\""};
  Command stated;
  CommandLine command;
  if (stated.append(words) && stated.size() <= max_length &&
      command.append({"ls ", options, " "}) && append_quoted(command, directory)) {
    LogCmdOutput(command.c_str(), nullptr);
  } else {
    LogString(TooLong{"The command", words, max_length}.c_str());
  }
  LogMsg("\n");
}

extern "C" {

int ListFiles(const char* directory, int recursive) noexcept {
  if (FileExists(directory) == 0) {
    LogMsg("\nERROR: Directory %s does not exist, errno %d.\n", directory, errno);
  } else {
    sit::list_directory(recursive != 0 ? "-lLR" : "-lL", directory, kListingLength);
  }
  return 0;
}

void MyCopy(const char* source, const char* destination) noexcept {
  const std::string_view from = sit::text_of(source);
  const std::string_view to = sit::text_of(destination);
  Command stated;
  if (!sit::compose(stated, "The command", {"cp ", from, " ", to, "\n"})) return;
  if (FileExists(source) == 0) {
    LogMsg("\nCannot copy %s because file does not exist.\n", source);
    return;
  }
  sit::CommandLine command;
  if (!command.append("cp") || !sit::append_words(command, from) ||
      !sit::append_words(command, to)) {
    LogMsg(
        "\nERROR: Not copying %s to %s: the shell or cp would not take these names as they "
        "stand.\n",
        source, destination);
    return;
  }
  if (!all_have_end(from)) {
    LogMsg("\nERROR: Not copying %s to %s: it is no file of a known size.\n", source, destination);
    return;
  }
  LogMsg("\nCopying %s...\n", source);
  static_cast<void>(command.append("\n"));
  LogCmdOutput(command.c_str(), nullptr);
}

}  // extern "C"
