#include "situtil/capture.h"

#include <array>
#include <cerrno>

#include "commfile.h"
#include "files.h"

namespace sit {
namespace {

void announce(const char* command) noexcept { log_verbose("\nExecuting:\n%s\n\n", command); }

}  // namespace

Outcome run_into(const char* command, TempFile& output) noexcept {
  const Outcome outcome = run({.command = command, .output = nullptr, .output_fd = output.fd()});
  if (const int error = output.seal(); error != 0) {
    log("ERROR: Output of %s may be lost: its temporary file cannot grow, errno = %d\n", command,
        error);
  }
  return outcome;
}

void log_output_of(const char* command) noexcept {
  TempFile captured;
  if (!captured.is_made()) {
    log("LogCmdOutput: failed to create temp file\n");
    return;
  }
  announce(command);
  const bool has_started = run_into(command, captured).has_started;
  Input input{captured};
  if (!has_started || log_input(input) != 0) {
    log("Failed to capture output from %s\n", command);
    log_verbose("Failed to open file %s\n", captured.name());
  }
}

void keep_output_of(const char* command, const char* output) noexcept {
  announce(command);
  if (command != nullptr) run({.command = command, .output = output});
}

int log_input(Input& input) noexcept {
  std::array<char, 8192> block;
  for (;;) {
    const std::size_t got = input.read(block.data(), block.size());
    if (got == 0) return input.error();
    log_text({block.data(), got});
  }
}

int log_file(const char* path) noexcept {
  if (path == nullptr) return ENOENT;
  const UniqueFd file = open_for_reading(path);
  if (!file.is_open()) return errno;
  Input input{file.get(), path};
  log_input(input);
  log_if_cut_off(input, path);
  return 0;
}

}  // namespace sit
