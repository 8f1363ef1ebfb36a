// What every collection command does around its own section.
#pragma once

#include <concepts>
#include <optional>
#include <type_traits>

#include "commfile.h"
#include "commutils/views.h"
#include "session.h"
#include "sit/codes.h"
#include "sitexec/commands.h"
#include "sitexec/initiation.h"
#include "situtil/temp_file.h"

namespace sit::sitexec {

enum class Needs { kNothing, kSession, kInstallations };

struct Frame {
  const char* path;
  int mode;
  int final = SIT_FINAL;
  // Null for a section that writes its own beginning.
  const char* title = nullptr;
  Needs needs = Needs::kSession;
  // Write into the report of another command when one is open, and leave it open.
  bool joins_open_report = false;
  // The report takes the notes of a command that copies files: a null path stands for a temporary
  // one, which stays, and how closing it goes is no result.
  bool takes_notes = false;
};

// The frame of a command about installations.
inline Frame about_installations(const Report& report) noexcept {
  return {.path = report.path,
          .mode = report.mode,
          .final = report.final,
          .needs = Needs::kInstallations};
}

// The frame of one that copies files of theirs.
inline Frame taking_notes(const char* path) noexcept {
  return {.path = path,
          .mode = SIT_APPEND,
          .final = 0,
          .needs = Needs::kInstallations,
          .takes_notes = true};
}

// The open mode of commands for which any value but 64 means appending.
inline int create_or_append(int mode) noexcept {
  return mode == SIT_CREATE ? SIT_CREATE : SIT_APPEND;
}

// Sees to the path and to what the command needs, before any report is opened.
[[nodiscard]] inline int prepare(const Frame& frame) noexcept {
  if (!frame.takes_notes && is_missing(frame.path)) return SIT_NO_REPORT_PATH;
  if (frame.needs != Needs::kNothing) ensure_session();
  if (frame.needs == Needs::kInstallations) ensure_installations();
  return SIT_OK;
}

[[nodiscard]] inline int open_framed_report(const Frame& frame) noexcept {
  if (frame.path != nullptr) return open_report(frame.path, frame.mode);
  TempFile temporary;
  if (!temporary.is_made()) return SIT_NOT_FOUND;
  begin_report_in(temporary.release(), temporary.name());
  temporary.keep();
  return SIT_OK;
}

// The section's own result, 0 when it has none.
template <std::invocable Body>
[[nodiscard]] int result_of(Body& body) noexcept {
  if constexpr (std::is_void_v<std::invoke_result_t<Body&>>) {
    body();
    return SIT_OK;
  } else {
    return body();
  }
}

// Runs `body` inside the frame, unless `before`, which is asked when all is there but the report,
// has a result to end with. Returns the result of the body, or what opening or closing gave.
template <std::invocable Before, std::invocable Body>
[[nodiscard]] int run_framed(const Frame& frame, Before before, Body body) noexcept {
  if (frame.joins_open_report && report_is_open()) return result_of(body);
  if (const int missing = prepare(frame); missing != SIT_OK) return missing;
  if (const std::optional<int> end = before()) return *end;
  if (const int opened = open_framed_report(frame); opened != SIT_OK) return opened;
  if (frame.title != nullptr) {
    log("\n");
    log_title(frame.title);
  }
  const int result = result_of(body);
  const int closed = close_report(frame.final);
  return result != SIT_OK || frame.takes_notes ? result : closed;
}

template <std::invocable Body>
[[nodiscard]] int run_framed(const Frame& frame, Body body) noexcept {
  return run_framed(
      frame, []() -> std::optional<int> { return std::nullopt; }, body);
}

}  // namespace sit::sitexec
