// From a command or a file into the open report.
#include "situtil/capture.h"

#include <array>
#include <cerrno>

#include "commfile.h"
#include "files.h"
#include "sit/situtil.h"
#include "situtil/child.h"

sit::Outcome sit::run_into(const char* command, TempFile& output) noexcept {
  const Outcome outcome = run({.command = command, .output = nullptr, .output_fd = output.fd()});
  if (const int error = output.seal(); error != 0) {
    LogMsg("ERROR: Output of %s may be lost: its temporary file cannot grow, errno = %d\n", command,
           error);
  }
  return outcome;
}

int sit::copy_into_report(Input& input) noexcept {
  std::array<char, 8192> block;
  for (;;) {
    const std::size_t got = input.read(block.data(), block.size());
    if (got == 0) return input.error();
    log_bytes({block.data(), got});
  }
}

extern "C" {

void LogCmdOutput(const char* command, const char* output) noexcept {
  if (output != nullptr) {
    LogMsgV("\nExecuting:\n%s\n\n", command);
    static_cast<void>(execcmd(command, output));
    return;
  }
  sit::TempFile captured;
  if (!captured.is_made()) {
    LogMsg("LogCmdOutput: failed to create temp file\n");
    return;
  }
  LogMsgV("\nExecuting:\n%s\n\n", command);
  const bool has_started = sit::run_into(command, captured).has_started;
  sit::Input input{captured};
  if (!has_started || sit::copy_into_report(input) != 0) {
    LogMsg("Failed to capture output from %s\n", command);
    LogMsgV("Failed to open file %s\n", captured.name());
  }
}

int ReadTextFile(const char* path) noexcept {
  if (path == nullptr) return ENOENT;
  const sit::UniqueFd file = sit::open_for_reading(path);
  if (!file.is_open()) return errno;
  sit::Input input{file.get(), path};
  sit::copy_into_report(input);
  sit::log_if_cut_off(input, path);
  return 0;
}

}  // extern "C"
