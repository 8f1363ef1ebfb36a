// What tells that something is wrong, as files of rules say.
#include <tuple>

#include "support/collection.h"

namespace test {
namespace {

class Findings : public CollectTest {
 protected:
  [[nodiscard]] std::string file(const std::string& rule) const {
    write_file(path("rules.yaml"), "findings:\n  - {name: ours, " + rule + "}\n");
    return "--findings " + path("rules.yaml") + " ";
  }
};

TEST_F(Findings, SeverityDecidesWhatItMeansForRowAndRun) {
  const std::tuple<std::string, std::string, std::string, int> cases[] = {
      {"lost", "partial", "incomplete", 1},        {"failed", "partial", "failed", 1},
      {"incomplete", "partial", "incomplete", 1},  {"wrong", "ok", "ok", 0},
      {"not here", "ok", "not available here", 0}, {"ends", "ok", "ok", 0}};
  for (const auto& [severity, outcome, section, status] : cases) {
    const Collected made = collect(
        "--only environment " +
            file("reports: [environment], section: '^List of', words: 'Its day, {1},', severity: " +
                 severity + ", pattern: \"^SIT_DAY='(.*)'\", matches: [\"SIT_DAY='x'\"]"),
        "export SIT_DAY=2009-06-30");
    EXPECT_EQ(made.status, status) << severity;
    EXPECT_EQ(made.outcome("environment"), outcome) << severity;
    EXPECT_EQ(made.row("environment").at("sections").at(0).at("outcome"), section) << severity;
    std::string told = severity == "ends" ? "Its day, 2009-06-30, ended on 2009-06-30\n"
                                          : "Its day, 2009-06-30,\n";
    if (severity == "not here") told = "";
    std::string found;
    for (const auto& problem : made.manifest.at("problems")) {
      EXPECT_EQ(problem.at("file"), "environment.txt");
      found += problem.at("text").get<std::string>() + "\n";
    }
    EXPECT_EQ(found, told) << severity;
  }
}

TEST_F(Findings, CopiedFilesAndCapturesAreLookedThrough) {
  static_cast<void>(sample_options("--healthy"));
  const std::string capture = "seq -f \"requests %.0f\" 200000; printf \"requests x\"";
  const Collected made = collect(
      "--only logs --only capture --installation " + sample() + "/pel --capture '" + capture +
      "' " +
      file("files: '/portal[.]log$|^capture-.*/output', severity: failed, words: 'It says {1}', "
           "pattern: 'requests (.*)', matches: [requests 1]"));
  EXPECT_EQ(made.status, 0) << "the collecting itself lacks nothing";
  std::string found;
  for (const auto& problem : made.manifest.at("problems")) {
    found += problem.at("file").get<std::string>() + ":" + problem.at("line").dump() + " " +
             problem.at("text").get<std::string>() + "\n";
  }
  EXPECT_EQ(
      found,
      "10.1B/logs/brokers/portal/portal.log:2 It says served\n"
      "capture-seq/output.txt:10 It says 1\ncapture-seq/output.txt:11 It says 2\n"
      "capture-seq/output.txt:12 It says 3\n"
      "capture-seq/output.txt:200010 ours: 200001 lines of this file tell of it, the last one "
      "here\n");
}

}  // namespace
}  // namespace test
