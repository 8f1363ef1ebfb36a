// System information: which commands are tried, and how their sections are written.
#include "sit/usysinfo.h"

#include "commfile.h"
#include "situtil/capture.h"

extern "C" {

const char* MACHLST[] = {"uname -X", "uname -a", "uname", nullptr};
const char* ULIMITLST[] = {"ulimit -a", "ulimit", nullptr};
const char* SWAPLST[] = {"free", "vmstat", nullptr};
const char* MNTLST[] = {"mount", "/etc/mount", "/usr/sbin/mount", nullptr};
const char* DSKLST[] = {"df -k", "df", nullptr};
const char* SYSTABLST[] = {"sar -v 1 1", "/etc/pstat -T", nullptr};
const char* KNLLST[] = {"sysctl -a", "/sbin/sysctl -a", nullptr};
const char* SEMLST[] = {"ipcs -s", "ipcs -sa", "/etc/sysdef | grep SEM", nullptr};
const char* SHMLST[] = {"ipcs -m", "ipcs -ma", "/etc/sysdef | grep SHM", nullptr};
const char* PRDLST[] = {"rpm -qa", nullptr};
const char* PROCLST[] = {"ps -eflyw", "ps -eflw", "ps -elfy", "ps -efl",
                         "ps -ef",    "ps -auwx", "ps",       nullptr};
const char* NETLST[] = {"netstat -a", "/usr/bin/netstat -a", "netstat", "/usr/bin/netstat",
                        nullptr};
const char* PCHLST[] = {nullptr};

}  // extern "C"

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

bool begin_output(const sit::TempFile& output, const char* failure) noexcept {
  if (!output.is_made()) LogString(failure);
  return output.is_made();
}

// Runs the command and copies its output if it succeeds.
bool write_if_successful(const char* command, sit::TempFile& output) noexcept {
  LogMsgV("Executing %s ...\n", command);
  if (sit::run_into(command, output).result != 0) return false;
  LogMsg("Command: %s\n\n", command);
  sit::Input input{output};
  sit::copy_into_report(input);
  return true;
}

enum class Tried { kSuccess, kAllFailed, kNoFile };

// Runs the commands in turn until one succeeds, each with a file of its own: one that has failed
// may be writing still.
Tried try_commands(const char** list, int limit) noexcept {
  int tried = 0;
  do {
    sit::TempFile output;
    if (!begin_output(output, "execcmdlist: Failed to create temp file, exiting\n")) {
      return Tried::kNoFile;
    }
    if (tried == 0) LogMsgV("Temp Log file is %s\n", output.name());
    if (tried < limit && write_if_successful(list[tried], output)) return Tried::kSuccess;
  } while (++tried < limit && list[tried] != nullptr);
  return Tried::kAllFailed;
}

}  // namespace

extern "C" {

int GetUnixSysInfo(int16_t section) noexcept {
  if (section != 0) return 0;
  for (const Section& entry : kSections) {
    if (entry.command != nullptr) {
      execonecmd(entry.title, entry.command);
    } else {
      execcmdlist(entry.title, entry.list, entry.limit);
    }
  }
  return 0;
}

void execcmdlist(const char* title, const char* list[], int limit) noexcept {
  LogTitle(title);
  if (list == nullptr || list[0] == nullptr) {
    LogString("No commands listed for this section\n");
    return;
  }
  const Tried tried = try_commands(list, limit);
  if (tried == Tried::kNoFile) return;
  if (tried == Tried::kAllFailed) {
    LogString("Unable to extract information.\n");
    LogString("The following commands were executed, but returned an error status:\n");
    for (int i = 0; i < limit && list[i] != nullptr; ++i) LogMsg("  %s\n", list[i]);
  }
  LogString("\n\n");
}

void execonecmd(const char* title, const char* command) noexcept {
  LogTitle(title);
  LogMsg("Command: %s\n\n", command);
  sit::TempFile output;
  if (!begin_output(output, "execonecmd: Failed to create temp file, exiting\n")) return;
  LogMsgV("Temp Log file is %s\n", output.name());
  LogMsgV("Executing %s ...\n", command);
  sit::run_into(command, output);
  sit::Input input{output};
  sit::copy_into_report(input);
  LogString("\n\n");
}

}  // extern "C"
