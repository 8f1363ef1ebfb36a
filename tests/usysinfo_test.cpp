#include <fstream>
#include <regex>

#include "support/sit_test.h"

namespace {

using test::read_file;
using test::without_header;

class SystemInformation : public test::SitTest {};

std::string title(const std::string& text) {
  return text + "\n" + std::string(text.size(), '=') + "\n\n";
}

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
  const char* some[] = {"echo hidden; exit 1", "echo shown", "echo never", nullptr};
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
  EXPECT_EQ(
      without_header(read_file(path("r"))),
      "\n" + title("System Information") + shown("Machine Information", "echo 1", "1") +
          title("Linux Distribution") + "Command: cat /etc/*-release\n\n" + releases + "\n\n" +
          shown("Ulimit Information", "echo 3", "3") + shown("Swap Information", "echo 4", "4") +
          shown("Mount Information", "echo 5", "5") +
          shown("Disk Free Information", "echo 6", "6") +
          failed("System Table Information", "  exit 7\n  exit 1\n") +
          shown("Kernel Settings", "echo 8", "8") +
          failed("Semaphore Information", "  exit 9\n  exit 1\n") +
          shown("Shared Memory Information", "echo 10", "10") +
          failed("Process Listing", "  exit 11\n" + test::repeat("  exit 1\n", 4)) +
          shown("TCP/IP and UDP Network Status", "echo 12", "12") +
          shown("Installed Product Information", "echo 13", "13") + title("Patch Information") +
          "No commands listed for this section\n\n==End of Log==\n");
}

TEST_F(SystemInformation, OtherSelectors) {
  for (const int16_t selector : {int16_t{1}, int16_t{-1}, int16_t{256}}) {
    ASSERT_EQ(GetSysInfo(path("r").c_str(), selector, 64, 0), 0);
    EXPECT_EQ(without_header(read_file(path("r"))), "\n" + title("System Information") + "\n");
  }
}

}  // namespace
