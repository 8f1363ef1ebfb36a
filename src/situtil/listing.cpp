// Listings and copies through the shell's own tools.
#include "situtil/listing.h"

#include <cerrno>

#include "commfile.h"
#include "commutils/bounded_text.h"
#include "commutils/views.h"
#include "sit/situtil.h"
#include "situtil/shell.h"

namespace {

constexpr std::size_t kListingLength = 255;
using Command = sit::BoundedText<512>;

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
  LogMsg("\nCopying %s...\n", source);
  static_cast<void>(command.append("\n"));
  LogCmdOutput(command.c_str(), nullptr);
}

}  // extern "C"
