// From a command or a file into the open report.
#include <sys/stat.h>

#include <cerrno>

#include "commfile.h"
#include "files.h"
#include "sit/situtil.h"
#include "situtil/piece_reader.h"
#include "situtil/temp_file.h"

namespace {

// How much to read of a file that an abandoned command may still be writing: what it held at the
// start. 0 where the size says nothing, as for files under /proc.
std::size_t size_at_start(int fd) noexcept {
  struct stat status {};
  return ::fstat(fd, &status) == 0 ? static_cast<std::size_t>(status.st_size) : 0;
}

}  // namespace

extern "C" {

void LogCmdOutput(const char* command, const char* output) noexcept {
  if (output != nullptr) {
    LogMsgV("\nExecuting:\n%s\n\n", command);
    static_cast<void>(execcmd(command, output));
    return;
  }
  const sit::TempFile captured;
  if (!captured.has_name()) {
    LogMsg("LogCmdOutput: failed to create temp file\n");
    return;
  }
  LogMsgV("\nExecuting:\n%s\n\n", command);
  static_cast<void>(execcmd(command, captured.name()));
  if (ReadTextFile(captured.name()) != 0) {
    LogMsg("Failed to capture output from %s\n", command);
    LogMsgV("Failed to open file %s\n", captured.name());
  }
}

int ReadTextFile(const char* path) noexcept {
  if (path == nullptr) return ENOENT;
  const sit::UniqueFd file = sit::open_for_reading(path);
  if (!file.is_open()) return errno;
  const std::size_t size = size_at_start(file.get());
  std::size_t copied = 0;
  sit::PieceReader reader{file.get(), sit::kPieceLength};
  for (sit::Piece piece; (size == 0 || copied < size) && reader.next(piece);) {
    sit::log_bytes(piece.text);
    copied += piece.text.size();
  }
  return 0;
}

}  // extern "C"
