#include "sitexec/capture.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <span>
#include <string_view>

#include "commfile.h"
#include "commutils/views.h"
#include "file_status.h"
#include "handles.h"
#include "sitexec/initiation.h"
#include "situtil/capture.h"
#include "situtil/library.h"
#include "situtil/listing.h"
#include "situtil/path.h"

namespace sit::sitexec {
namespace {

using CapturedCommand = BoundedText<510>;

// Where the directory is missing, the work goes on in the one before.
void change_directory(const char* path) noexcept {
  [[maybe_unused]] const int ignored = ::chdir(path);
}

// The working directory at its making, which it goes back to at its end. A descriptor finds the
// way even when the directory has been removed or renamed.
class WorkingDirectory {
 public:
  WorkingDirectory() noexcept : start_(::open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {
    if (::getcwd(path_.data(), path_.size()) == nullptr) path_[0] = '\0';
  }
  WorkingDirectory(const WorkingDirectory&) = delete;
  WorkingDirectory& operator=(const WorkingDirectory&) = delete;
  ~WorkingDirectory() { go_back(); }

  void go_back() const noexcept {
    if (start_.is_open() && ::fchdir(start_.get()) == 0) return;
    if (path_[0] != '\0') change_directory(path_.data());
  }

  // Completes a path that is relative to this directory, if there is room for that.
  void complete(std::span<char> path) const noexcept {
    Path whole;
    if (path[0] == '/' || path_[0] == '\0' || !join_path(whole, {path_.data(), path.data()})) {
      return;
    }
    static_cast<void>(store(path, whole.view()));
  }

 private:
  UniqueFd start_;
  std::array<char, SIT_PATH_BYTES> path_{};
};

// Whether the texts fit; an index that is open says which one does not.
bool fits(const Capture& capture, Path& folder, CapturedCommand& command) noexcept {
  const std::string_view base = text_of(capture.base);
  return compose_path(folder, {base, capture.base == nullptr ? "" : "/", text_of(capture.name)}) &&
         compose(command, "The command", {text_of(capture.command)});
}

void announce(const Capture& capture) noexcept {
  log("\n");
  if (capture.is_library) {
    log("DLL Entry Point: %s() in %s\n", capture.entry, capture.command);
  } else {
    log("Command: %s\nOutput File: %s%c%s\n", capture.command, capture.name, '/',
        capture.output_file);
  }
}

// Returns the result of opening the output report; 0 where there is none.
int run_command(const CapturedCommand& command, const char* output_file) noexcept {
  if (!is_missing(output_file)) {
    if (const int opened = open_report(output_file, SIT_CREATE); opened != SIT_OK) return opened;
  }
  log_output_of(command.c_str());
  return SIT_OK;
}

void write_outcome(const Capture& capture, bool failed, const char* error) noexcept {
  if (capture.is_library && failed) {
    log("DLL failed: %s\n", error);
  } else if (capture.is_library) {
    log("DLL completed.\n");
  }
  log("Files captured:\n");
  change_directory("..");
  list_files(capture.name, Depth::kAll);
  log("\n\n");
}

// Opens the index where its path was meant: its directory, where temporary files may have to go, is
// then told from the root. Returns what opening gave.
int reopen_index(const char* index, const WorkingDirectory& start) noexcept {
  start.go_back();
  const int opened = open_report(index, SIT_APPEND);
  if (opened == SIT_OK && pc != nullptr) start.complete(pc->reportDir);
  return opened;
}

}  // namespace

int run_captured(const Capture& capture) noexcept {
  ensure_session();
  const WorkingDirectory start;
  const char* index = capture.index;
  if (index != nullptr) {
    const int mode = exists(index) ? SIT_APPEND : SIT_CREATE;
    if (const int opened = open_report(index, mode); opened != SIT_OK) return opened;
    announce(capture);
  }
  Path folder;
  CapturedCommand command;
  const bool runs = fits(capture, folder, command);
  if (index != nullptr) static_cast<void>(close_report(0));
  if (!runs) return ENAMETOOLONG;

  change_directory(folder.c_str());
  const WorkingDirectory inside;
  int result = SIT_OK;
  bool failed = false;
  HeapText error;
  if (capture.is_library) {
    failed = !call_entry_point(command.c_str(), capture.entry, error);
  } else {
    result = run_command(command, capture.output_file);
  }
  static_cast<void>(close_report(SIT_FINAL));
  if (index != nullptr && reopen_index(index, start) == SIT_OK) {
    inside.go_back();
    write_outcome(capture, failed, error.get());
    static_cast<void>(close_report(0));
  }
  return result;
}

bool call_entry_point(const char* path, const char* entry, HeapText& error) noexcept {
  const std::string_view name = text_of(path);
  // The loader looks for a bare name elsewhere; here it means a file of the working directory.
  const bool is_here = !contains(name, "/") && exists(path);
  const HeapText file = concatenate({is_here ? "./" : "", name});
  if (file == nullptr) return false;
  Library library{file.get()};
  if (library.is_loaded()) {
    if (const auto call = library.entry_point<void (*)()>(entry == nullptr ? "" : entry);
        call != nullptr) {
      call();
      return true;
    }
  }
  error = library.take_error();
  return false;
}

}  // namespace sit::sitexec
