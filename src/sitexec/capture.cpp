// Capture of any command or library entry point, with an index of what it left behind.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <span>
#include <string_view>

#include "commfile.h"
#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "handles.h"
#include "sit/codes.h"
#include "sit/situtil.h"
#include "sitexec/frame.h"
#include "situtil/library.h"
#include "situtil/path.h"

namespace {

using CapturedCommand = sit::BoundedText<510>;

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
    sit::Path whole;
    if (path[0] == '/' || path_[0] == '\0' || !sit::join_path(whole, {path_.data(), path.data()})) {
      return;
    }
    static_cast<void>(sit::store(path, whole.view()));
  }

 private:
  sit::UniqueFd start_;
  std::array<char, SIT_PATH_BYTES> path_{};
};

struct Capture {
  const char* command;
  const char* entry;
  bool is_library;
  const char* base;
  const char* name;
  const char* output_file;
};

// Whether the texts fit; an index that is open says which one does not.
bool fits(const Capture& capture, sit::Path& folder, CapturedCommand& command) noexcept {
  const std::string_view base = sit::text_of(capture.base);
  return sit::compose(folder, "The path",
                      {base, capture.base == nullptr ? "" : "/", sit::text_of(capture.name)}) &&
         sit::compose(command, "The command", {sit::text_of(capture.command)});
}

void announce(const Capture& capture) noexcept {
  LogMsg("\n");
  if (capture.is_library) {
    LogMsg("DLL Entry Point: %s() in %s\n", capture.entry, capture.command);
  } else {
    LogMsg("Command: %s\nOutput File: %s%c%s\n", capture.command, capture.name, '/',
           capture.output_file);
  }
}

// Returns the result of opening the output report; 0 where there is none.
int run_command(const CapturedCommand& command, const char* output_file) noexcept {
  if (!sit::is_missing(output_file)) {
    if (const int opened = LogOpen(output_file, SIT_CREATE); opened != SIT_OK) return opened;
  }
  LogCmdOutput(command.c_str(), nullptr);
  return SIT_OK;
}

void write_outcome(const Capture& capture, bool failed, const char* error) noexcept {
  if (capture.is_library && failed) {
    LogMsg("DLL failed: %s\n", error);
  } else if (capture.is_library) {
    LogMsg("DLL completed.\n");
  }
  LogMsg("Files captured:\n");
  change_directory("..");
  ListFiles(capture.name, 1);
  LogMsg("\n\n");
}

// Opens the index where its path was meant: its directory, where temporary files may have to go, is
// then told from the root. Returns what opening gave.
int reopen_index(const char* index, const WorkingDirectory& start) noexcept {
  start.go_back();
  const int opened = LogOpen(index, SIT_APPEND);
  if (opened == SIT_OK && pc != nullptr) start.complete(pc->reportDir);
  return opened;
}

}  // namespace

extern "C" {

int RunCommand(const char* command, const char* entry, char is_library, const char* base,
               const char* capture_name, const char* output_file, const char* index) noexcept {
  sit::ensure_session();
  const WorkingDirectory start;
  const Capture capture{command, entry, is_library != 0, base, capture_name, output_file};
  if (index != nullptr) {
    const int mode = FileExists(index) != 0 ? SIT_APPEND : SIT_CREATE;
    if (const int opened = LogOpen(index, mode); opened != SIT_OK) return opened;
    announce(capture);
  }
  sit::Path folder;
  CapturedCommand copy;
  const bool runs = fits(capture, folder, copy);
  if (index != nullptr) static_cast<void>(LogClose(0));
  if (!runs) return ENAMETOOLONG;

  change_directory(folder.c_str());
  const WorkingDirectory inside;
  int result = SIT_OK;
  bool failed = false;
  char* error = nullptr;
  if (capture.is_library) {
    failed = ExecDLLFunction(copy.c_str(), entry, &error) != 0;
  } else {
    result = run_command(copy, output_file);
  }
  const sit::HeapText library_error{error};
  static_cast<void>(LogClose(SIT_FINAL));
  if (index != nullptr && reopen_index(index, start) == SIT_OK) {
    inside.go_back();
    write_outcome(capture, failed, library_error.get());
    static_cast<void>(LogClose(0));
  }
  return result;
}

int ExecDLLFunction(const char* path, const char* entry, char** error) noexcept {
  if (error != nullptr) *error = nullptr;
  const std::string_view name = sit::text_of(path);
  // The loader looks for a bare name elsewhere; here it means a file of the working directory.
  const bool is_here = name.find('/') == std::string_view::npos && FileExists(path) != 0;
  const sit::HeapText file = sit::concatenate({is_here ? "./" : "", name});
  if (file == nullptr) return 1;
  sit::Library library{file.get()};
  if (library.is_loaded()) {
    if (const auto call = library.entry_point<void (*)()>(entry == nullptr ? "" : entry);
        call != nullptr) {
      call();
      return 0;
    }
  }
  if (error != nullptr) *error = library.take_error().release();
  return 1;
}

}  // extern "C"
