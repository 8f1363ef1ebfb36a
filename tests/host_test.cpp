// The host program, and hosts of other kinds.
#include <regex>

#include "support/sit_test.h"

namespace test {
namespace {

class Host : public SitTest {
 protected:
  static Ran sit(const std::string& arguments) { return run(std::string(HOST) + " " + arguments); }
};

TEST_F(Host, CallsAndRefusals) {
  write_file(path("text"), "not a library");
  expect_rows("host", "sit", [](const Row& row) {
    const Ran ran = sit(row.text(0));
    return std::to_string(ran.status) + " " + ran.output;
  });
  for (const std::string& arguments :
       {std::string("--output /proc/nosuch"),
        "--output " + path("out") + " --plugin " VERSION_LIBRARY_WHOLE}) {
    const Ran ran = sit("collect " + arguments);
    EXPECT_EQ(ran.status, 3) << arguments;
    EXPECT_TRUE(std::regex_match(ran.output, std::regex("sit: [^\n]+\n"))) << ran.output;
  }
  EXPECT_EQ(sit("--help").status, 0);
  EXPECT_TRUE(fs::is_empty(path("out"))) << "nothing half done";
}

TEST_F(Host, RefusesRulesThatCannotBeUsed) {
  fs::create_directory(path("here"));
  expect_rows("host", "rules", [this](const Row& row) {
    write_file(path("f"), row.text(1));
    const Ran ran = run("cd " + path("here") + "; " HOST " " + row.text(0) + " " + path("f"));
    EXPECT_EQ(ran.status, 2);
    EXPECT_THAT(ran.output, testing::AllOf(StartsWith("sit: "), EndsWith("\n")));
    return ran.output.substr(5, ran.output.size() - 6);
  });
  EXPECT_TRUE(fs::is_empty(path("here"))) << "nothing is collected";
}

TEST_F(Host, ListNamesEveryCall) {
  const Ran ran = sit("list");
  EXPECT_EQ(ran.status, 0);
  EXPECT_THAT(ran.output,
              HasSubstr("GetSysInfo <report path: text> <section: 16-bit integer> <mode: "
                        "32-bit integer> <final: 32-bit integer>\n    writes \"System "
                        "Information\""));
}

TEST_F(Host, OwnNamesAreLeftAlone) {
  for (const char* scope : {"local", "global"}) {
    // Unloading gives up the session, which a leak checker would remark on.
    const Ran ran = run("ASAN_OPTIONS=detect_leaks=0 " + std::string(CLASHING_HOST) +
                        " " PLUGIN " " + path("r") + " " + scope);
    EXPECT_EQ(ran.output, "works 1, host untouched 1, unloads 1\n");
    EXPECT_THAT(read_file(path("r")), Not(HasSubstr("the list of the host")));
  }
}

}  // namespace
}  // namespace test
