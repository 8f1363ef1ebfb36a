// The collection commands.
#include "commfile.h"
#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "session.h"
#include "sit/javaver.h"
#include "sit/pelver.h"
#include "sit/sitexec.h"
#include "sitexec/frame.h"

namespace {

using sit::create_or_append;
using sit::run_framed;

void write_versions_text() noexcept {
  sit::HeapText unowned;
  const char* messages = pc == nullptr ? nullptr : pc->versionsText;
  if (messages == nullptr) {
    unowned.reset(GetPhmVers());
    messages = unowned.get();
    if (pc != nullptr) pc->versionsText = unowned.release();
  }
  LogMsg("\n\n");
  LogTitle("Pelloran Versions");
  LogMsg("\n");
  LogString(messages);
}

// Installations of the 8 series name no Java of their own, and neither do other product kinds.
bool names_its_java(const PHMVER& record) noexcept {
  constexpr unsigned kOtherKinds = PK_WEBCLIENT | PK_FRAMEWORK | PK_MONITOR_MASK;
  return !sit::text_of(record.version).starts_with("8.") && (record.flags & kOtherKinds) == 0;
}

// Returns the section's own result.
int write_java_versions() noexcept {
  LogMsg("\n\nJava Versions\n=============\n\n");
  if (sit::is_product_independent()) {
    getJavaInfoSystem();
    return SIT_OK;
  }
  if (pphm == nullptr) {
    LogMsg("\nNo Pelloran installation found.\n");
    return SIT_NO_INSTALLATION;
  }
  for (PHMVER* record = pphm; record != nullptr; record = record->next) {
    if (names_its_java(*record)) getJavaInfo(record);
  }
  return SIT_OK;
}

void write_version_summary(int extra) noexcept {
  if (pc != nullptr && pc->osVersion[0] != '\0') {
    LogMsg("%s\n", pc->osVersion);
  } else {
    LogMsg("Could not get OS Version information.\n");
  }
  if (!sit::is_product_independent() && GetPelVers(nullptr, 0, 0) != SIT_OK) return;
  if (GetJavaVers(nullptr, 0, 0) == SIT_OK && extra != 0) {
    p_sitfunctbl->ListFurtherVersions(nullptr, 0);
  }
}

}  // namespace

extern "C" {

int GetEnvironInfo(const char* path, int mode, int final) noexcept {
  const sit::Frame frame{.path = path,
                         .mode = create_or_append(mode),
                         .final = final,
                         .title = "List of environment variables"};
  return run_framed(frame, [] {
    p_sitfunctbl->ListEnvironment();
    if (!sit::is_product_independent()) p_sitfunctbl->ListFurtherEnvironment();
  });
}

int GetSysInfo(const char* path, int16_t section, int mode, int final) noexcept {
  const sit::Frame frame{
      .path = path, .mode = create_or_append(mode), .final = final, .title = "System Information"};
  return run_framed(frame, [section] { p_sitfunctbl->ListSystem(section); });
}

int GetPelVers(const char* path, int mode, int final) noexcept {
  const sit::Frame frame{
      .path = path, .mode = create_or_append(mode), .final = final, .joins_open_report = true};
  return run_framed(frame, write_versions_text);
}

int GetJavaVers(const char* path, int mode, int final) noexcept {
  const sit::Frame frame{.path = path,
                         .mode = create_or_append(mode),
                         .final = final,
                         .needs_installations = !sit::is_product_independent(),
                         .joins_open_report = true};
  int section = SIT_OK;
  const int closed = run_framed(frame, [&section] { section = write_java_versions(); });
  return section != SIT_OK ? section : closed;
}

int GetVersInfo(const char* path, int mode, int final, int extra) noexcept {
  const sit::Frame frame{
      .path = path, .mode = create_or_append(mode), .final = final, .title = "OS Version"};
  const int closed = run_framed(frame, [extra] { write_version_summary(extra); });
  if (closed != SIT_OK) return closed;
  return pphm != nullptr || sit::is_product_independent() ? SIT_OK : SIT_NO_INSTALLATION;
}

}  // extern "C"
