#include "usysinfo.h"

#include "commfile.h"
#include "commutils/views.h"
#include "sit/usysinfo.h"
#include "situtil/capture.h"

namespace sit::usysinfo {
namespace {

// A section has a list of alternatives, of which at most `limit` are tried, or a single command.
struct Section {
  const char* title;
  const char** list;
  int limit;
  const char* command = nullptr;
};

constexpr Section kSections[] = {
    {"Machine Information", MACHLST, 5},
    {"Linux Distribution", nullptr, 0, "cat /etc/*-release"},
    {"Ulimit Information", ULIMITLST, 4},
    {"Swap Information", SWAPLST, 7},
    {"Mount Information", MNTLST, 4},
    {"Disk Free Information", DSKLST, 3},
    {"System Table Information", SYSTABLST, 2},
    {"Kernel Settings", KNLLST, 10},
    {"Semaphore Information", SEMLST, 2},
    {"Shared Memory Information", SHMLST, 2},
    {"Process Listing", PROCLST, 5},
    {"TCP/IP and UDP Network Status", NETLST, 4},
    {"Installed Product Information", PRDLST, 6},
    {"Patch Information", PCHLST, 7},
};

void log_output(const TempFile& output) noexcept {
  Input input{output};
  log_input(input);
}

bool begin_output(const TempFile& output, const char* failure) noexcept {
  if (!output.is_made()) log_text(failure);
  return output.is_made();
}

// Runs the command and copies its output if it succeeds.
bool write_if_successful(const char* command, TempFile& output) noexcept {
  log_verbose("Executing %s ...\n", command);
  if (run_into(command, output).result != 0) return false;
  log("Command: %s\n\n", command);
  log_output(output);
  return true;
}

enum class Tried { kSuccess, kAllFailed, kNoFile };

// Runs the commands in turn until one succeeds, each with a file of its own: one that has failed
// may be writing still.
Tried try_commands(const char** list, int limit) noexcept {
  int tried = 0;
  do {
    TempFile output;
    if (!begin_output(output, "execcmdlist: Failed to create temp file, exiting\n")) {
      return Tried::kNoFile;
    }
    if (tried == 0) log_verbose("Temp Log file is %s\n", output.name());
    if (tried < limit && write_if_successful(list[tried], output)) return Tried::kSuccess;
  } while (++tried < limit && list[tried] != nullptr);
  return Tried::kAllFailed;
}

}  // namespace

void write_all_sections() noexcept {
  for (const Section& section : kSections) {
    if (section.command != nullptr) {
      write_section(section.title, section.command);
    } else {
      write_section(section.title, section.list, section.limit);
    }
  }
}

void write_section(const char* title, const char** list, int limit) noexcept {
  log_title(text_of(title));
  if (list == nullptr || list[0] == nullptr) {
    log_text("No commands listed for this section\n");
    return;
  }
  const Tried tried = try_commands(list, limit);
  if (tried == Tried::kNoFile) return;
  if (tried == Tried::kAllFailed) {
    log_text("Unable to extract information.\n");
    log_text("The following commands were executed, but returned an error status:\n");
    for (int i = 0; i < limit && list[i] != nullptr; ++i) log("  %s\n", list[i]);
  }
  log_text("\n\n");
}

void write_section(const char* title, const char* command) noexcept {
  log_title(text_of(title));
  log("Command: %s\n\n", command);
  TempFile output;
  if (!begin_output(output, "execonecmd: Failed to create temp file, exiting\n")) return;
  log_verbose("Temp Log file is %s\n", output.name());
  log_verbose("Executing %s ...\n", command);
  run_into(command, output);
  log_output(output);
  log_text("\n\n");
}

}  // namespace sit::usysinfo
