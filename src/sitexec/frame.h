// What every collection command does around its own section.
#pragma once

#include <concepts>

#include "commfile.h"
#include "commutils/views.h"
#include "session.h"
#include "sit/codes.h"
#include "sit/pelver.h"
#include "sit/sitexec.h"
#include "situtil/temp_file.h"

namespace sit {

struct Frame {
  const char* path;
  int mode;
  int final;
  // Null for a section that writes its own beginning.
  const char* title = nullptr;
  // Discover the installations when the list is empty.
  bool needs_installations = false;
  // Write into the report of another command when one is open, and leave it open.
  bool joins_open_report = false;
};

// The open mode of commands for which any value but 64 means appending.
inline int create_or_append(int mode) noexcept {
  return mode == SIT_CREATE ? SIT_CREATE : SIT_APPEND;
}

inline void ensure_session() noexcept {
  if (IsInitiated == 0) SIT_Initiate();
}

inline void ensure_installations() noexcept {
  if (pphm == nullptr) Initialize_pphm();
}

// Runs `body` inside the frame. Returns 0, or why the report could not be opened or closed.
template <std::invocable Body>
int run_framed(const Frame& frame, Body body) noexcept {
  if (frame.joins_open_report && report_is_open()) {
    body();
    return SIT_OK;
  }
  if (is_missing(frame.path)) return SIT_NO_REPORT_PATH;
  ensure_session();
  if (frame.needs_installations) ensure_installations();
  if (const int opened = LogOpen(frame.path, frame.mode); opened != SIT_OK) return opened;
  if (frame.title != nullptr) {
    LogMsg("\n");
    LogTitle(frame.title);
  }
  body();
  return LogClose(frame.final);
}

// Runs `body` with the report at `path` open, or with a temporary one, which stays, when the path
// is null. Returns the body's result, or why there is no report.
template <std::invocable Body>
int run_appending(const char* path, Body body) noexcept {
  if (path == nullptr) {
    TempFile temporary;
    if (!temporary.is_made()) return SIT_NOT_FOUND;
    begin_report_in(temporary.release(), temporary.name());
    temporary.keep();
  } else if (const int opened = LogOpen(path, SIT_APPEND); opened != SIT_OK) {
    return opened;
  }
  const int result = body();
  static_cast<void>(LogClose(0));
  return result;
}

}  // namespace sit
