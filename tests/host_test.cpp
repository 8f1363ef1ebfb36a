// The host program, and hosts of other kinds.
#include <filesystem>
#include <regex>

#include "support/sit_test.h"

namespace {

namespace fs = std::filesystem;
using test::Ran;
using test::read_file;
using test::run;

class Host : public test::SitTest {
 protected:
  static Ran sit(const std::string& arguments) { return run(std::string(HOST) + " " + arguments); }
};

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
      {"collect --output /proc/nosuch", 3},
      {"collect --output " + path("out") + " --plugin " + path("missing"), 3},
      {"collect --output " + path("out") + " --plugin " + path("not-a-library"), 3},
      {"collect --output " + path("out") + " --plugin " VERSION_LIBRARY_WHOLE, 3},
      {"", 2}};
  for (const auto& [arguments, status] : calls) {
    const Ran ran = sit(arguments);
    EXPECT_EQ(ran.status, status) << arguments;
    EXPECT_TRUE(std::regex_match(ran.output, std::regex("sit: [^\n]+\n"))) << ran.output;
  }
  EXPECT_EQ(sit("collect --nosuch").status, 2);
  EXPECT_EQ(sit("--help").status, 0);
  EXPECT_TRUE(fs::is_empty(path("out"))) << "nothing half done";
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
