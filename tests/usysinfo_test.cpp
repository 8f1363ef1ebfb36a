#include <fstream>
#include <regex>

#include "support/sit_test.h"

namespace {

using test::read_file;
using test::without_header;

class SystemInformation : public test::SitTest {
 protected:
  static std::string title(const std::string& text) {
    return text + "\n" + std::string(text.size(), '=') + "\n\n";
  }
};

TEST_F(SystemInformation, FirstSuccessWins) {
  const char* list[] = {"echo hidden; exit 1", "echo shown", "echo never", nullptr};
  EXPECT_EQ(written_by([&] { execcmdlist("Some Title", list, 9); }),
            title("Some Title") + "Command: echo shown\n\nshown\n\n\n");
}

TEST_F(SystemInformation, NoCommandSucceeds) {
  const char* list[] = {"exit 1", "exit 2", "echo beyond the limit", nullptr};
  const std::string failure =
      "Unable to extract information.\n"
      "The following commands were executed, but returned an error status:\n";
  EXPECT_EQ(written_by([&] { execcmdlist("T", list, 2); }),
            title("T") + failure + "  exit 1\n  exit 2\n\n\n");
  EXPECT_EQ(written_by([&] { execcmdlist("T", list, 0); }), title("T") + failure + "\n\n");
  EXPECT_EQ(written_by([] { execcmdlist("T", PCHLST, 7); }),
            title("T") + "No commands listed for this section\n");
}

TEST_F(SystemInformation, SingleCommandShowsItsErrors) {
  EXPECT_EQ(written_by([] { execonecmd("T", "echo no >&2; exit 4"); }),
            title("T") + "Command: echo no >&2; exit 4\n\nno\n\n\n");
}

TEST_F(SystemInformation, NowhereToPutTheOutput) {
  test::set_environment("TMPDIR", "/proc");
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

TEST_F(SystemInformation, SectionsOfThisMachine) {
  // The host may replace commands: these make the report the same on every machine.
  const std::pair<const char**, const char*> lists[] = {
      {MACHLST, "echo 1"}, {ULIMITLST, "echo 3"}, {SWAPLST, "echo 4"}, {MNTLST, "echo 5"},
      {DSKLST, "echo 6"},  {SYSTABLST, "exit 7"}, {KNLLST, "echo 8"},  {SEMLST, "exit 9"},
      {SHMLST, "echo 10"}, {PROCLST, "exit 11"},  {NETLST, "echo 12"}, {PRDLST, "echo 13"}};
  for (const auto& [list, command] : lists) list[0] = command;
  for (const char** list : {SYSTABLST, SEMLST, PROCLST}) {
    for (int i = 1; list[i] != nullptr; ++i) list[i] = "exit 1";
  }
  std::string releases;
  for (const char* file : {"/etc/lsb-release", "/etc/os-release"}) {
    if (std::ifstream(file).is_open()) releases += read_file(file);
  }
  ASSERT_EQ(GetSysInfo(path("r").c_str(), 0, 64, 1), 0);
  const auto good = [](const char* name, const std::string& number) {
    return title(name) + "Command: echo " + number + "\n\n" + number + "\n\n\n";
  };
  const auto bad = [](const char* name, const std::string& tried) {
    return title(name) +
           "Unable to extract information.\n"
           "The following commands were executed, but returned an error status:\n" +
           tried + "\n\n";
  };
  EXPECT_EQ(without_header(read_file(path("r"))),
            "\n" + title("System Information") + good("Machine Information", "1") +
                title("Linux Distribution") + "Command: cat /etc/*-release\n\n" + releases +
                "\n\n" + good("Ulimit Information", "3") + good("Swap Information", "4") +
                good("Mount Information", "5") + good("Disk Free Information", "6") +
                bad("System Table Information", "  exit 7\n  exit 1\n") +
                good("Kernel Settings", "8") +
                bad("Semaphore Information", "  exit 9\n  exit 1\n") +
                good("Shared Memory Information", "10") +
                bad("Process Listing", "  exit 11\n" + test::repeat("  exit 1\n", 4)) +
                good("TCP/IP and UDP Network Status", "12") +
                good("Installed Product Information", "13") + title("Patch Information") +
                "No commands listed for this section\n\n==End of Log==\n");
}

TEST_F(SystemInformation, CommandLists) {
  const std::pair<const char**, std::vector<std::string>> lists[] = {
      {MACHLST, {"uname -X", "uname -a", "uname"}},
      {ULIMITLST, {"ulimit -a", "ulimit"}},
      {SWAPLST, {"free", "vmstat"}},
      {MNTLST, {"mount", "/etc/mount", "/usr/sbin/mount"}},
      {DSKLST, {"df -k", "df"}},
      {SYSTABLST, {"sar -v 1 1", "/etc/pstat -T"}},
      {KNLLST, {"sysctl -a", "/sbin/sysctl -a"}},
      {SEMLST, {"ipcs -s", "ipcs -sa", "/etc/sysdef | grep SEM"}},
      {SHMLST, {"ipcs -m", "ipcs -ma", "/etc/sysdef | grep SHM"}},
      {PRDLST, {"rpm -qa"}},
      {PROCLST, {"ps -eflyw", "ps -eflw", "ps -elfy", "ps -efl", "ps -ef", "ps -auwx", "ps"}},
      {NETLST, {"netstat -a", "/usr/bin/netstat -a", "netstat", "/usr/bin/netstat"}},
      {PCHLST, {}}};
  for (const auto& [list, expected] : lists) {
    std::vector<std::string> commands;
    for (const char** entry = list; *entry != nullptr; ++entry) commands.emplace_back(*entry);
    EXPECT_EQ(commands, expected);
  }
}

TEST_F(SystemInformation, OtherSelectors) {
  for (const int16_t selector : {int16_t{1}, int16_t{-1}, int16_t{256}}) {
    ASSERT_EQ(GetSysInfo(path("r").c_str(), selector, 64, 0), 0);
    EXPECT_EQ(without_header(read_file(path("r"))), "\n" + title("System Information") + "\n");
  }
}

}  // namespace
