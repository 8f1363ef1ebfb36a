// The commands about the machine and all installations.
#include "sitexec/commands.h"

#include "javaver.h"
#include "pelver/installations.h"
#include "pelver/keys.h"
#include "sitexec/frame.h"

namespace sit::sitexec {
namespace {

using pelver::installations;

void write_versions_section() noexcept {
  HeapText unowned;
  const char* messages = versions_text(unowned);
  log("\n\n");
  log_title("Pelloran Versions");
  log("\n");
  log_text(text_of(messages));
}

// Installations of the 8 series name no Java of their own, and neither do other product kinds.
bool names_its_java(const PHMVER& record) noexcept {
  constexpr unsigned kOtherKinds = PK_WEBCLIENT | PK_FRAMEWORK | PK_MONITOR_MASK;
  return !text_of(record.version).starts_with("8.") && !pelver::is_of_kind(record, kOtherKinds);
}

int write_java_section() noexcept {
  log("\n\nJava Versions\n=============\n\n");
  if (is_product_independent()) {
    javaver::write_versions_of_machine();
    return SIT_OK;
  }
  if (installations().empty()) {
    log("\nNo Pelloran installation found.\n");
    return SIT_NO_INSTALLATION;
  }
  for (const PHMVER& record : installations()) {
    if (names_its_java(record)) javaver::write_versions_for(record);
  }
  return SIT_OK;
}

void write_summary_sections(bool wants_further_versions) noexcept {
  constexpr Report kOpenReport{nullptr, 0, 0};
  if (pc != nullptr && pc->osVersion[0] != '\0') {
    log("%s\n", pc->osVersion);
  } else {
    log("Could not get OS Version information.\n");
  }
  if (!is_product_independent() && write_versions(kOpenReport) != SIT_OK) return;
  if (write_java(kOpenReport) == SIT_OK && wants_further_versions) {
    p_sitfunctbl->ListFurtherVersions(nullptr, 0);
  }
}

}  // namespace

int write_environment(const Report& report) noexcept {
  const Frame frame{.path = report.path,
                    .mode = create_or_append(report.mode),
                    .final = report.final,
                    .title = "List of environment variables"};
  return run_framed(frame, [] {
    p_sitfunctbl->ListEnvironment();
    if (!is_product_independent()) p_sitfunctbl->ListFurtherEnvironment();
  });
}

int write_system(const Report& report, std::int16_t section) noexcept {
  const Frame frame{.path = report.path,
                    .mode = create_or_append(report.mode),
                    .final = report.final,
                    .title = "System Information"};
  return run_framed(frame, [section] { p_sitfunctbl->ListSystem(section); });
}

int write_versions(const Report& report) noexcept {
  const Frame frame{.path = report.path,
                    .mode = create_or_append(report.mode),
                    .final = report.final,
                    .joins_open_report = true};
  return run_framed(frame, write_versions_section);
}

int write_java(const Report& report) noexcept {
  const Frame frame{.path = report.path,
                    .mode = create_or_append(report.mode),
                    .final = report.final,
                    .needs = is_product_independent() ? Needs::kSession : Needs::kInstallations,
                    .joins_open_report = true};
  return run_framed(frame, write_java_section);
}

int write_summary(const Report& report, bool wants_further_versions) noexcept {
  const Frame frame{.path = report.path,
                    .mode = create_or_append(report.mode),
                    .final = report.final,
                    .title = "OS Version"};
  const int closed = run_framed(
      frame, [wants_further_versions] { write_summary_sections(wants_further_versions); });
  if (closed != SIT_OK) return closed;
  return installations().empty() && !is_product_independent() ? SIT_NO_INSTALLATION : SIT_OK;
}

HeapText version_keys(int selector) noexcept {
  ensure_session();
  ensure_installations();
  Path keys;
  for (const PHMVER& record : installations()) {
    Path key;
    if (!pelver::belongs_to(record, selector) || !pelver::append_key(record, key) ||
        contains(keys.view(), key.view())) {
      continue;
    }
    static_cast<void>(keys.append({keys.empty() ? "" : ",", key.view()}));
  }
  return duplicate(keys.view());
}

}  // namespace sit::sitexec
