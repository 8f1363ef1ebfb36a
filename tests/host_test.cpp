// The host program, and hosts of other kinds.
#include <sys/stat.h>

#include <filesystem>
#include <map>
#include <regex>

#include "support/sit_test.h"

namespace {

namespace fs = std::filesystem;
using test::Ran;
using test::read_file;
using test::run;

// The files below a folder, by their path there.
std::map<std::string, std::string> files_below(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) {
      files[entry.path().lexically_relative(folder)] = read_file(entry.path());
    }
  }
  return files;
}

class Host : public test::SitTest {
 protected:
  static Ran sit(const std::string& arguments) { return run(std::string(HOST) + " " + arguments); }

  // The whole validation report and everything copied beside it.
  static void expect_validation_of(const std::string& sample, const fs::path& collected) {
    std::string report = read_file(EXPECTED "/sample_validation.txt");
    for (std::size_t at = 0; (at = report.find("@DIR@")) != std::string::npos;) {
      report.replace(at, 5, sample);
    }
    EXPECT_EQ(test::without_header(read_file(collected / "validation.txt")), report);
    for (const std::string name : {"obroker.properties", "conmgr.properties"}) {
      EXPECT_EQ(read_file(collected / (name + ".101B")),
                read_file(sample + "/pel/properties/" + name));
    }
    std::map<std::string, std::string> logs;
    for (const auto& [file, content] : files_below(sample + "/pel/work")) {
      const std::string name = fs::path(file).filename();
      if (name.ends_with(".pf")) continue;
      const std::string broker = name.substr(0, name.find('.'));
      const bool is_admin_server = name == "AdminSrvConsole.log" || name == "adminsrv.log" ||
                                   name == "cmdhandler.log" || name == "faults.log" ||
                                   name == "general.log";
      logs[(is_admin_server ? "adminserver/" : "brokers/" + broker + "/") + name] = content;
    }
    for (const std::string name : {"sports", "freight"}) {
      logs["databases/" + name + "/" + name + ".lg"] =
          read_file(sample + "/pel/databases/" + name + ".lg");
    }
    std::string& longest = logs["brokers/orders/orders.broker.log"];
    longest = longest.substr(longest.find('\n', longest.size() - (1U << 20U)) + 1);
    longest.insert(0, "PELINVENTORY:  File trimmed to 1 MB...\n\n");
    auto copied = files_below(collected / "logs");
    EXPECT_EQ(copied["messages.txt"].substr(copied["messages.txt"].rfind("\n\n\nCannot")),
              "\n\n\nCannot find " + sample + "/pel/work/ferry.log. Skipping file copy.\n\n\n\n\n" +
                  "Can't find " + sample + "/pel/work/asv0.exp... Skipping file copy\n\n");
    copied.erase("messages.txt");
    EXPECT_TRUE(copied == logs);
  }
};

TEST_F(Host, CollectsThisMachine) {
  const Ran ran = sit("collect --output " + path("out") + " --plugin " PLUGIN);
  EXPECT_EQ(ran.status, 0) << ran.output;
  static const std::regex expected(
      "No Pelloran installation found; collecting product-independent information\\.\n"
      "step 1 of 3, GetVersInfo: success\n"
      "step 2 of 3, GetSysInfo: success\n"
      "step 3 of 3, GetEnvironInfo: success\n\n"
      "Step +Result +Seconds +Bytes +File +Meaning\n"
      "GetVersInfo +0 +[\\d.]+ +\\d+ +versions\\.txt +success\n"
      "GetSysInfo +0 +[\\d.]+ +\\d+ +system\\.txt +success\n"
      "GetEnvironInfo +0 +[\\d.]+ +\\d+ +environment\\.txt +success\n\n"
      "Reports are in (.*/sit-.+-\\d{8}-\\d{6})\n");
  std::smatch match;
  ASSERT_TRUE(std::regex_match(ran.output, match, expected)) << ran.output;
  const fs::path folder = match[1].str();
  struct stat status {};
  ASSERT_EQ(::stat(folder.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0700U);
  for (const char* name : {"versions.txt", "system.txt", "environment.txt"}) {
    const std::string report = read_file(folder / name);
    test::without_header(report);
    EXPECT_TRUE(report.ends_with("\n==End of Log==\n")) << name;
    ASSERT_EQ(::stat((folder / name).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U) << name;
  }
}

TEST_F(Host, CollectsTheSampleInstallation) {
  const std::string sample = path("sample");
  ASSERT_EQ(run(EXAMPLES "/install " + sample).status, 0);
  const Ran ran = run(
      ". " + sample + "/environment && " HOST " collect --output " + path("out") + " --netscape " +
      sample + "/netscape,intranet --netscape " + sample + "/netscape" + " --apache " + sample +
      "/apache --capture 'echo captured' --capture-library " + CAPTURED_LIBRARY + ",leave_a_file");
  EXPECT_EQ(ran.status, 1) << "one of the servers is not told";
  const char* row = " +\\d+ +[\\d.]+ +\\d+ +";
  std::string rows;
  for (const char* step :
       {"GetVersInfo:versions.txt", "GetSysInfo:system.txt", "GetEnvironInfo:environment.txt",
        "GetPelCFGInfo:10.1B/configuration.txt", "GetPelInstFiles:10.1B/files.txt",
        "GetPelSecurityLog:10.1B/security.txt", "GetOBValidationInfo:10.1B/validation.txt",
        "OBCopyFiles:10.1B/logs/messages.txt", "GetPelCFGInfo:2.1A-of-10.1B03/configuration.txt",
        "GetPelInstFiles:2.1A-of-10.1B03/files.txt",
        "GetPelSecurityLog:2.1A-of-10.1B03/security.txt",
        "GetDelvonFiles:2.1A-of-10.1B03/delvon.txt", "GetNetscapeInfo:netscape-1.txt",
        "GetNetscapeInfo:netscape-2.txt", "GetApacheInfo:apache-1.txt",
        "RunCommand:capture/index.txt", "RunCommand:capture/index.txt"}) {
    const std::string text = step;
    const std::size_t colon = text.find(':');
    rows += text.substr(0, colon) + row + text.substr(colon + 1) + " +[^\n]+\n";
  }
  std::smatch match;
  ASSERT_TRUE(std::regex_search(ran.output, match, std::regex(rows))) << ran.output;
  EXPECT_NE(ran.output.find("10027"), std::string::npos);
  const fs::path folder = *fs::directory_iterator(path("out"));
  EXPECT_EQ(test::without_header(read_file(folder / "capture/command-1.txt")),
            "captured\n\n==End of Log==\n");
  EXPECT_TRUE(fs::exists(folder / "capture/left"));
  EXPECT_EQ(read_file(folder / "2.1A-of-10.1B03/Delvon21APel101B/delvon.xml"),
            read_file(sample + "/delvon/conf/delvon.xml"));
  expect_validation_of(sample, folder / "10.1B");
}

TEST_F(Host, CollectsTheLogsOfTheNamedBrokersOnly) {
  const std::string sample = path("sample");
  ASSERT_EQ(run(EXAMPLES "/install " + sample).status, 0);
  const Ran ran =
      run(". " + sample + "/environment && " HOST " collect --brokers portal --brokers " +
          "db:Sports --output " + path("out"));
  EXPECT_EQ(ran.status, 0) << ran.output;
  const fs::path folder = *fs::directory_iterator(path("out"));
  auto logs = files_below(folder / "10.1B/logs");
  EXPECT_EQ(logs.erase("messages.txt"), 1U);
  const std::map<std::string, std::string> expected{
      {"brokers/portal/portal.log", read_file(sample + "/pel/work/portal.log")},
      {"databases/sports/sports.lg", read_file(sample + "/pel/databases/sports.lg")}};
  EXPECT_EQ(logs, expected);
}

TEST_F(Host, ShowsALiveLineOnATerminal) {
  test::make_tool(path("bin/uname"), "sleep 1");
  const Ran ran = run("PATH=" + path("bin") + ":$PATH script -qec '" HOST " collect --output " +
                      path("out") + "' /dev/null");
  EXPECT_EQ(ran.status, 0);
  EXPECT_NE(ran.output.find("step 2 of 3, GetSysInfo: Machine Information (0 s)"),
            std::string::npos)
      << ran.output;
  EXPECT_EQ(ran.output.find("step 1 of 3, GetVersInfo: success"), std::string::npos);
}

TEST_F(Host, CallsByName) {
  const std::pair<std::string, Ran> calls[] = {
      {"--version", {0, "sit 11.6\n"}},
      {"call GetAPIVersion", {0, "11.6\n"}},
      {"call FoundPelInst", {0, "FoundPelInst returned 1: PHM is not set\n"}},
      {"call SIT_Initiate", {0, "SIT_Initiate returned 0: success\n"}},
      {"call GetSysInfo '' -1 64 1", {1, "GetSysInfo returned 10000: no report path given\n"}},
      {"call GetSysInfo " + path("r") + " -1 64 1", {0, "GetSysInfo returned 0: success\n"}},
      {"call GetEnvironInfo /nosuch/r 64 1",
       {1, "GetEnvironInfo returned 2: No such file or directory\n"}},
      {"call --independent GetVersInfo " + path("r") + " 64 1 0",
       {0, "GetVersInfo returned 0: success\n"}},
      {"call GetSysInfo r 65536 64 1",
       {2, "sit: argument \"section\" must be one 16-bit integer, not \"65536\"\n"}},
      {"call GetSysInfo r 0 64 yes",
       {2, "sit: argument \"final\" must be one 32-bit integer, not \"yes\"\n"}},
      {"call GetDelvonFiles " + path("r") + " " + path("") + " 2.1A:10.1B",
       {0, path("") + "\nGetDelvonFiles returned 0: success\n"}},
      {"call RunCommand 'exit 0' '' 0 - . '' -", {0, "RunCommand returned 0: success\n"}},
      {"call RunCommand x '' 300 - . '' -",
       {2, "sit: argument \"is library\" must be one 8-bit integer, not \"300\"\n"}},
      {"call GetPelVers r",
       {2,
        "sit: wrong number of arguments; usage: sit call GetPelVers <report path: text> <mode: "
        "32-bit integer> <final: 32-bit integer>\n"}},
      {"call nosuch", {2, "sit: no call named nosuch; \"sit list\" shows them all\n"}}};
  for (const auto& [arguments, expected] : calls) {
    const Ran ran = sit(arguments);
    EXPECT_EQ(ran.status, expected.status) << arguments;
    EXPECT_EQ(ran.output, expected.output) << arguments;
  }
}

TEST_F(Host, SaysWhatIsWrongInOneLine) {
  test::write_file(path("not-a-library"), "text");
  const std::pair<std::string, int> calls[] = {
      {"collect --output /proc/nosuch", 1},
      {"collect --output " + path("out") + " --plugin " + path("missing"), 1},
      {"collect --output " + path("out") + " --plugin " + path("not-a-library"), 1},
      {"collect --output " + path("out") + " --plugin " VERSION_LIBRARY_WHOLE, 1},
      {"collect --capture-library /lib.so", 2},
      {"", 2}};
  for (const auto& [arguments, status] : calls) {
    const Ran ran = sit(arguments);
    EXPECT_EQ(ran.status, status) << arguments;
    EXPECT_TRUE(std::regex_match(ran.output, std::regex("sit: [^\n]+\n"))) << ran.output;
  }
  EXPECT_EQ(sit("collect --nosuch").status, 2);
  EXPECT_EQ(sit("--help").status, 0);
  EXPECT_FALSE(fs::exists(path("out"))) << "nothing half done";
}

TEST_F(Host, ListNamesEveryCall) {
  const Ran ran = sit("list");
  EXPECT_EQ(ran.status, 0);
  EXPECT_NE(ran.output.find("GetSysInfo <report path: text> <section: 16-bit integer> <mode: "
                            "32-bit integer> <final: 32-bit integer>\n    writes \"System "
                            "Information\""),
            std::string::npos);
}

TEST_F(Host, OwnNamesAreLeftAlone) {
  for (const char* scope : {"local", "global"}) {
    // Unloading gives up the session, which a leak checker would remark on.
    const Ran ran = run("ASAN_OPTIONS=detect_leaks=0 " + std::string(CLASHING_HOST) +
                        " " PLUGIN " " + path("r") + " " + scope);
    EXPECT_EQ(ran.output, "works 1, host untouched 1, unloads 1\n");
    EXPECT_EQ(read_file(path("r")).find("the list of the host"), std::string::npos);
  }
}

}  // namespace
