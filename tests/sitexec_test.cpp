#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <tuple>

#include "support/commands.h"
#include "support/sit_test.h"

namespace test {
namespace {

extern "C" int layouts_agree_in_c(const PlatformOps* table);

class Session : public SitTest {};

TEST_F(Session, RecordLayouts) {
  const std::size_t offsets[][2] = {{offsetof(SitSession, errorText), 768},
                                    {offsetof(SitSession, osVersion), 776},
                                    {offsetof(SitSession, versionsText), 1032},
                                    {offsetof(SitSession, osFlags), 1040},
                                    {offsetof(PHMVER, maintLevel), 24},
                                    {offsetof(PHMVER, bitness), 40},
                                    {offsetof(PHMVER, fullVersion), 48},
                                    {offsetof(PHMVER, pluginsFile), 64},
                                    {offsetof(PHMVER, next), 104}};
  for (const auto& [offset, expected] : offsets) EXPECT_EQ(offset, expected);
  EXPECT_EQ(layouts_agree_in_c(&sitfunctbl), 1);
}

TEST_F(Session, InitiatedByTheFirstCommand) {
  EXPECT_EQ(GetEnvironInfo("", 64, 1), SIT_NO_REPORT_PATH);
  EXPECT_EQ(pc, nullptr);
  EXPECT_EQ(IsInitiated, 0);
  PutRecentError("too early");
  char empty[1] = "";
  EXPECT_EQ(RetrieveErrors(empty), 0);
  EXPECT_EQ(GetEnvironInfo(path("r").c_str(), 64, 1), 0);
  ASSERT_NE(pc, nullptr);
  EXPECT_EQ(IsInitiated, 1);
  EXPECT_EQ(p_sitfunctbl, &sitfunctbl);
  EXPECT_EQ(pc->versionsText, nullptr);
  const SitSession* first = pc;
  EXPECT_EQ(GetEnvironInfo(path("r").c_str(), 64, 1), 0);
  EXPECT_EQ(pc, first);
}

TEST_F(Session, SmallAnswers) {
  std::string buffer(8, '#');
  GetAPIVersion(buffer.data());
  EXPECT_EQ(buffer, std::string("11.6\0###", 8));
  std::string version(256, '#');
  EXPECT_EQ(GetOSVersion(version.data()), version.data());
  std::string uname = run("uname -s -n -r -v -m").output;
  uname.insert(uname.size() - 1, "  ");
  EXPECT_STREQ(version.c_str(), uname.c_str());
  EXPECT_EQ(GetOSVersion(nullptr), nullptr);
}

TEST_F(Session, ErrorsAreRecordedAndTaken) {
  SIT_Initiate();
  PutRecentError("disk full");
  PutRecentError("no PHM");
  EXPECT_STREQ(pc->errorText, "disk full\nno PHM\n");
  EXPECT_EQ(RetrieveErrors(nullptr), 17);
  std::string text(16, 'x');
  EXPECT_EQ(RetrieveErrors(text.data()), 17);
  EXPECT_EQ(text, std::string(16, 'x'));
  text += 'x';
  for (const char* taken : {"disk full\nno PHM\n", ""}) {
    EXPECT_EQ(RetrieveErrors(text.data()), 0);
    EXPECT_STREQ(text.c_str(), taken);
  }
  PutRecentError(std::string(5000, 'e').c_str());
  EXPECT_EQ(RetrieveErrors(nullptr), 5001);
}

TEST_F(Session, InstallationProbe) {
  EXPECT_EQ(FoundPelInst(), 1);
  set_environment("PHM", path("").c_str());
  EXPECT_EQ(FoundPelInst(), 2);
  write_file(path("version"), "");
  EXPECT_EQ(FoundPelInst(), 0);
}

TEST_F(Session, DiscoversAgainOnRequest) {
  set_environment("PHM", "/nosuch");
  char* first = Initialize_pphm();
  EXPECT_EQ(pc->versionsText, first);
  char* second = Initialize_pphm();
  EXPECT_NE(second, first);
  EXPECT_EQ(pc->versionsText, second);
  EXPECT_STREQ(first, second);
}

class Commands : public SitTest {};

TEST_F(Commands, ReportsThatCannotBeMade) {
  fs::current_path(path(""));
  ASSERT_EQ(run(EXAMPLES "/install sample && mkdir -p disk/reports disk/copies").status, 0);
  ASSERT_EQ(::mkfifo("fifo", 0600), 0);
  set_environment("PHM", path("sample/pel").c_str());
  set_environment("DELVONINIT", path("sample/delvon/delvon.ini").c_str());
  const std::string longest = "disk/reports" + std::string(242, '/') + "r";
  const std::string longer = "/" + longest;
  // What a command returns, and what one that opens the report only at its end.
  const std::tuple<const char*, int, int, int> cases[] = {
      {"disk/reports/r", SIT_CREATE, 0, 0},
      {"", SIT_CREATE, SIT_NO_REPORT_PATH, ENOENT},
      {longest.c_str(), SIT_CREATE, 0, 0},
      {longer.c_str(), SIT_CREATE, SIT_PATH_TOO_LONG, SIT_PATH_TOO_LONG},
      {"missing/r", SIT_CREATE, ENOENT, ENOENT},
      {"disk", SIT_CREATE, EISDIR, EISDIR},
      {"fifo", SIT_CREATE, ENXIO, ENXIO},
      {"/dev/full", SIT_CREATE, ENOSPC, 0},
      {nullptr, SIT_CREATE, SIT_NO_REPORT_PATH, 0},
      {"disk/reports/r", 7, SIT_BAD_OPEN_MODE, 0}};
  for (const auto& [report, mode, code, code_at_end] : cases) {
    for (const Command& command : kCommands) {
      if (mode == 7 && command.opens != Opens::kByMode) continue;
      fs::remove_all("disk/copies/Delvon21APel101B");
      const int expected = command.opens == Opens::kAtEnd ? code_at_end : code;
      EXPECT_EQ(command.run(report, mode), expected)
          << command.name << " " << (report == nullptr ? "(null)" : report) << " " << mode;
    }
  }
  for (const auto& entry : fs::directory_iterator(temporary())) {
    EXPECT_THAT(read_file(entry.path()), EndsWith("\n\n")) << "a report nobody has named";
    fs::remove(entry);
  }
  fs::current_path("/");
}

class Environment : public SitTest {};

TEST_F(Environment, OpenModesAndEndMarks) {
  const std::string title = "\nList of environment variables\n" + std::string(29, '=') + "\n\n";
  set_environment("SIT_TEST", std::string(20000, 'v').c_str());
  const std::string report = path("r");
  EXPECT_EQ(GetEnvironInfo(report.c_str(), 64, 1), 0);
  const std::string text = without_header(read_file(report));
  EXPECT_THAT(text, StartsWith(title));
  EXPECT_THAT(text, EndsWith("\n\n==End of Log==\n"));
  EXPECT_THAT(text, HasSubstr("SIT_TEST='" + std::string(20000, 'v') + "'\n"));
  for (const int mode : {0, 1024, 7, 64 + 1024}) {
    write_file(report, "old\n");
    EXPECT_EQ(GetEnvironInfo(report.c_str(), mode, 2), 0);
    const std::string appended = read_file(report);
    EXPECT_THAT(appended, StartsWith("old\n" + title));
    EXPECT_THAT(appended, Not(EndsWith("==End of Log==\n")));
  }
}

int slot_calls = 0;
int count_call(...) { return ++slot_calls; }

TEST_F(Environment, FurtherSlots) {
  SIT_Initiate();
  sitfunctbl.ListFurtherEnvironment = count_call;
  sitfunctbl.ListFurtherVersions = count_call;
  GetEnvironInfo(path("r").c_str(), 64, 1);
  EXPECT_EQ(slot_calls, 1);
  SetPelloranIndependent(1);
  GetEnvironInfo(path("r").c_str(), 64, 1);
  GetVersInfo(path("r").c_str(), 64, 1, 0);
  EXPECT_EQ(slot_calls, 1);
  GetVersInfo(path("r").c_str(), 64, 1, 1);
  EXPECT_EQ(slot_calls, 2);
}

class Versions : public SitTest {
 protected:
  static std::string os_section() {
    return "\nOS Version\n==========\n\n" + std::string(pc->osVersion) + "\n";
  }
  static std::string pelloran_section(const std::string& messages) {
    return "\n\nPelloran Versions\n=================\n\n\n" + messages;
  }
};

constexpr const char* kJava = "\n\nJava Versions\n=============\n\n";
constexpr const char* kNothing = "\nNo Pelloran installation found.\n";

TEST_F(Versions, NoInstallation) {
  if (fs::exists("/usr/bin/pel")) GTEST_SKIP() << "this machine has a launcher";
  const std::string messages =
      "No PHM env var set\nPlease set the PHM environment variable and execute again\n";
  const std::string report = path("r");
  EXPECT_EQ(GetVersInfo(report.c_str(), 64, 1, 1), SIT_NO_INSTALLATION);
  EXPECT_EQ(taken(GetPelVersList(SEL_ANY)), "");
  EXPECT_EQ(pphm, nullptr);
  EXPECT_EQ(without_header(read_file(report)),
            os_section() + pelloran_section(messages) + kJava + kNothing + "\n==End of Log==\n");
  EXPECT_EQ(GetJavaVers(report.c_str(), 64, 0), SIT_NO_INSTALLATION);
  EXPECT_EQ(without_header(read_file(report)), std::string(kJava) + kNothing + "\n");
  EXPECT_STREQ(pc->reportDir, "");
  EXPECT_EQ(GetPelVers(report.c_str(), 64, 1), 0);
  EXPECT_EQ(without_header(read_file(report)), pelloran_section(messages) + "\n==End of Log==\n");
}

TEST_F(Versions, ProductIndependent) {
  SetPelloranIndependent(1);
  set_environment("JAVA_HOME", "/nosuch");
  EXPECT_EQ(GetVersInfo(path("r").c_str(), 64, 0, 1), 0);
  EXPECT_EQ(without_header(read_file(path("r"))),
            os_section() + kJava +
                "JAVA_HOME indicates Java is installed in /nosuch\n"
                "Java executable /nosuch/bin/java does not exist\n\n\n");
  EXPECT_EQ(pc->versionsText, nullptr);
}

TEST_F(Versions, JoinAnOpenReportAndLeaveItOpen) {
  SIT_Initiate();
  set_environment("PHM", "/nosuch");
  set_environment("JREHOME", "/nosuch");
  EXPECT_EQ(written_by([] {
              EXPECT_EQ(GetJavaVers(nullptr, 0, 1), SIT_NO_INSTALLATION);
              EXPECT_EQ(GetPelVers(nullptr, 0, 1), 0);
              LogMsg("still open\n");
            }),
            std::string(kJava) + kNothing +
                pelloran_section("Using PHM: /nosuch\nUnable to open version file "
                                 "/nosuch/version\n\n") +
                "still open\n");
}

}  // namespace
}  // namespace test
