#include "situtil/listing.h"

#include <sys/stat.h>

#include <cerrno>

#include "commfile.h"
#include "commutils/bounded_text.h"
#include "commutils/views.h"
#include "file_status.h"
#include "files.h"
#include "handles.h"
#include "situtil/command.h"
#include "situtil/input.h"

namespace sit {
namespace {

constexpr std::size_t kListingLength = 255;
constexpr std::size_t kCopyLength = 511;

// Whether a copy of the file comes to an end: it is no device and no FIFO, nor goes on without a
// size as those under /proc do.
bool has_end(std::string_view name) noexcept {
  BoundedText<kCopyLength + 1> path;
  static_cast<void>(path.append(name));
  const UniqueFd file = open_for_reading(path.c_str());
  if (!file.is_open()) return errno != EINVAL;
  struct stat status {};
  return ::fstat(file.get(), &status) == 0 && !S_ISFIFO(status.st_mode) &&
         Input{file.get()}.tells_size();
}

bool all_have_end(std::string_view names) noexcept {
  for (std::string_view name = take_word(names); !name.empty(); name = take_word(names)) {
    if (!has_end(name)) return false;
  }
  return true;
}

}  // namespace

void list_directory(std::string_view options, std::string_view directory,
                    std::size_t max_length) noexcept {
  Command command{max_length};
  command.raw("ls ").raw(options).raw(" ").quoted(directory).run();
  log("\n");
}

void list_files(const char* directory, Depth depth) noexcept {
  if (!exists(directory)) {
    log("\nERROR: Directory %s does not exist, errno %d.\n", directory, errno);
  } else {
    list_directory(depth == Depth::kAll ? "-lLR" : "-lL", directory, kListingLength);
  }
}

void copy_by_command(const char* source, const char* destination) noexcept {
  const std::string_view from = text_of(source);
  Command command{kCopyLength};
  if (!command.raw("cp").words(from).words(text_of(destination)).raw("\n").fits()) return;
  if (!exists(source)) {
    log("\nCannot copy %s because file does not exist.\n", source);
  } else if (!command.has_mere_words()) {
    log("\nERROR: Not copying %s to %s: the shell or cp would not take these names as they "
        "stand.\n",
        source, destination);
  } else if (!all_have_end(from)) {
    log("\nERROR: Not copying %s to %s: it is no file of a known size.\n", source, destination);
  } else {
    log("\nCopying %s...\n", source);
    command.run();
  }
}

}  // namespace sit
