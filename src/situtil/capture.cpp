// From a command or a file into the open report.
#include "situtil/capture.h"

#include <array>
#include <cerrno>

#include "commfile.h"
#include "files.h"
#include "sit/situtil.h"
#include "situtil/temp_file.h"

void sit::copy_into_report(int fd, std::size_t most) noexcept {
  std::array<char, 8192> block;
  std::size_t copied = 0;
  while (copied < most) {
    const std::size_t got = read_some(fd, block.data(), block.size());
    if (got == 0) return;
    log_bytes({block.data(), got});
    copied += got;
  }
}

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
  sit::copy_into_report(file.get(), sit::size_to_read(file.get()));
  return 0;
}

}  // extern "C"
