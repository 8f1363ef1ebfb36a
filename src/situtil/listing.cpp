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
#include "situtil/command.h"
#include "situtil/input.h"

namespace {

constexpr std::size_t kListingLength = 255;
constexpr std::size_t kCopyLength = 511;

// Whether a copy of the file comes to an end: it is no device and no FIFO, nor goes on without a
// size as those under /proc do.
bool has_end(std::string_view name) noexcept {
  sit::BoundedText<kCopyLength + 1> path;
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
  Command command{max_length};
  command.raw("ls ").raw(options).raw(" ").quoted(directory).run();
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
  sit::Command command{kCopyLength};
  if (!command.raw("cp").words(from).words(to).raw("\n").fits()) return;
  if (FileExists(source) == 0) {
    LogMsg("\nCannot copy %s because file does not exist.\n", source);
    return;
  }
  if (!command.has_mere_words()) {
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
  command.run();
}

}  // extern "C"
