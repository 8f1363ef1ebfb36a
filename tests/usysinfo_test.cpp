#include <csignal>
#include <regex>

#include "support/sit_test.h"

namespace test {
namespace {

class SystemInformation : public SitTest {};

std::string shown(const char* name, const std::string& command, const std::string& output) {
  return title(name) + "Command: " + command + "\n\n" + output + "\n\n\n";
}

std::string failed(const char* name, const std::string& tried) {
  return title(name) +
         "Unable to extract information.\n"
         "The following commands were executed, but returned an error status:\n" +
         tried + "\n\n";
}

TEST_F(SystemInformation, FirstSuccessWins) {
  const char* some[] = {"echo hidden; exit 1", "exit 2", "echo shown", "echo never", nullptr};
  const char* none[] = {"exit 1", "exit 2", "echo beyond the limit", nullptr};
  EXPECT_EQ(written_by([&] {
              execcmdlist("Some Title", some, 9);
              execcmdlist("T", none, 2);
              execcmdlist("T", none, 0);
              execcmdlist("T", PCHLST, 7);
              execonecmd("T", "echo no >&2; exit 4");
            }),
            shown("Some Title", "echo shown", "shown") + failed("T", "  exit 1\n  exit 2\n") +
                failed("T", "") + title("T") + "No commands listed for this section\n" +
                shown("T", "echo no >&2; exit 4", "no"));
}

TEST_F(SystemInformation, NowhereToPutTheOutput) {
  set_environment("TMPDIR", "/proc");
  const char* list[] = {"echo x", nullptr};
  EXPECT_EQ(written_by([&] {
              execcmdlist("T", list, 1);
              execonecmd("U", "echo x");
            }),
            title("T") + "execcmdlist: Failed to create temp file, exiting\n" + title("U") +
                "Command: echo x\n\nexeconecmd: Failed to create temp file, exiting\n");
}

TEST_F(SystemInformation, VerboseLinesStandBetween) {
  const char* list[] = {"echo x", nullptr};
  ASSERT_EQ(LogOpen(path("r").c_str(), SIT_CREATE), 0);
  SetVerboseMode(1);
  execcmdlist("T", list, 1);
  LogClose(0);
  static const std::regex expected(
      "T\n=\n\nVERBOSE: Temp Log file is (.*)/tmp/sit.{6}\nVERBOSE: Executing echo x ...\n"
      "(VERBOSE: pid .*\n){1,2}VERBOSE: execcmd: process completed, status is 0 .*\n"
      "Command: echo x\n\nx\n\n\n\n");
  EXPECT_TRUE(std::regex_match(without_header(read_file(path("r"))), expected));
}

// A host that ignores its children makes all commands fail: the report then names every one that is
// tried, in the order of the lists and up to their limits.
TEST_F(SystemInformation, CommandsOfTheRealLists) {
  const std::pair<const char*, const char*> sections[] = {
      {"Ulimit Information", "  ulimit -a\n  ulimit\n"},
      {"Swap Information", "  free\n  vmstat\n"},
      {"Mount Information", "  mount\n  /etc/mount\n  /usr/sbin/mount\n"},
      {"Disk Free Information", "  df -k\n  df\n"},
      {"System Table Information", "  sar -v 1 1\n  /etc/pstat -T\n"},
      {"Kernel Settings", "  sysctl -a\n  /sbin/sysctl -a\n"},
      {"Semaphore Information", "  ipcs -s\n  ipcs -sa\n"},
      {"Shared Memory Information", "  ipcs -m\n  ipcs -ma\n"},
      {"Process Listing", "  ps -eflyw\n  ps -eflw\n  ps -elfy\n  ps -efl\n  ps -ef\n"},
      {"TCP/IP and UDP Network Status",
       "  netstat -a\n  /usr/bin/netstat -a\n  netstat\n  /usr/bin/netstat\n"},
      {"Installed Product Information", "  rpm -qa\n"}};
  std::string machine = failed("Machine Information", "  uname -X\n  uname -a\n  uname\n");
  machine.insert(machine.find("Unable"),
                 "WARNING: The host took the results of the commands (SIGCHLD), which therefore "
                 "count as failed.\n");
  const std::string releases = "cat /etc/*-release";
  std::string expected = "\n" + title("System Information") + machine +
                         shown("Linux Distribution", releases, run(releases).output);
  expected.erase(expected.size() - 1);  // the output has its own line end
  for (const auto& [name, commands] : sections) expected += failed(name, commands);
  std::signal(SIGCHLD, SIG_IGN);
  ASSERT_EQ(GetSysInfo(path("r").c_str(), 0, 64, 1), 0);
  EXPECT_EQ(without_header(read_file(path("r"))),
            expected + title("Patch Information") +
                "No commands listed for this section\n\n==End of Log==\n");
  std::signal(SIGCHLD, SIG_DFL);
  // What stands behind the limits is for hosts.
  const std::string rest = std::string(SEMLST[2]) + SHMLST[2] + PROCLST[5] + PROCLST[6];
  EXPECT_EQ(rest, "/etc/sysdef | grep SEM/etc/sysdef | grep SHMps -auwxps");
}

TEST_F(SystemInformation, OtherSelectors) {
  for (const int16_t selector : {int16_t{1}, int16_t{-1}, int16_t{256}}) {
    ASSERT_EQ(GetSysInfo(path("r").c_str(), selector, 64, 0), 0);
    EXPECT_EQ(without_header(read_file(path("r"))), "\n" + title("System Information") + "\n");
  }
}

}  // namespace
}  // namespace test
