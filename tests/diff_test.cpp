// "sit diff": what it tells of two collections.
#include <nlohmann/json.hpp>

#include "support/sit_test.h"

namespace test {
namespace {

using nlohmann::json;

class Diff : public SitTest {
 protected:
  // A collection as a folder, and as an archive.
  void make(const std::string& name, const json& rows, const json& problems,
            const std::map<std::string, std::string>& files) const {
    const json manifest{{"host", "box"}, {"started", name}, {"rows", rows}, {"problems", problems}};
    write_file(path(name + "/manifest.json"), manifest.dump());
    for (const auto& [file, text] : files) write_file(path(name + "/" + file), text);
    ASSERT_EQ(run("cd " + path("") + " && tar cJf " + name + ".tar.xz " + name).status, 0);
  }
  [[nodiscard]] Ran diff(const std::string& before, const std::string& after,
                         const std::string& options = "") const {
    return run("cd " + path("") + " && " HOST " diff " + options + " " + before + " " + after +
               " 2>&1");
  }
};

json row(const std::string& id, const std::string& outcome, const json& sections = json::array()) {
  return {{"id", id}, {"file", id + ".txt"}, {"outcome", outcome}, {"sections", sections}};
}

TEST_F(Diff, FindingsRowsAndSections) {
  const json sections{{{"title", "Mount Information"}, {"line", 3}},
                      {{"title", "Process Listing"}, {"line", 6}}};
  make("old", {row("system", "ok", sections), row("gone", "ok")},
       {{{"text", "It ends in 20 days, on 2026-12-14"}, {"file", "a.txt"}}, {{"text", "Mended"}}},
       {{"system.txt",
         "Date and Time       : Wed\n==\nMount Information\n==\na on /\n"
         "Process Listing\n==\nroot 1 0 init\nann 7 1 java x\n"},
        {"gone.txt", "was there\n"},
        {"10.1B/logs/a.log", "same\npassword=[masked 11111111]\n"},
        {"10.1B/long.txt", repeat("old\n", 25)}});
  make("new", {row("system", "partial", sections), row("extra/come", "ok")},
       {{{"text", "It ends in 19 days, on 2026-12-14"}, {"file", "a.txt"}},
        {{"text", "Broken \033[1m"}, {"file", "b.txt"}, {"line", 3}}},
       {{"system.txt",
         "Date and Time       : Thu\n==\nMount Information\n==\nb on /\n"
         "Process Listing\n==\nann 99 1 java x\nroot 1 1 init\n"},
        {"10.1B/logs/a.log", "same\npassword=[masked 22222222]\nlast\n"},
        {"10.1B/long.txt", repeat("new\n", 3) + "old\n"}});
  std::string gone;
  for (int i = 0; i < 20; ++i) gone += "- old\n";
  const std::string expected =
      "1 finding came, 1 finding went; 3 rows and 4 sections differ.\n"
      "OLD  box, old\nNEW  box, new\n\nFINDINGS\n+ Broken ?[1m  (b.txt)\n- Mended\n"
      "\nROWS\n+ extra/come: ok\n  system: ok -> partial\n- gone: ok\n"
      "\n10.1B/logs/a.log\n+ last\n"
      "\n10.1B/long.txt\n" +
      gone +
      "- and 4 lines more\n+ new\n+ new\n+ new\n"
      "\ngone.txt (only in the old one)\n- was there\n"
      "\nsystem.txt: Mount Information\n- a on /\n+ b on /\n";
  for (const std::string form : {"", ".tar.xz"}) {
    const Ran ran = diff("old", "new" + form);
    EXPECT_EQ(ran.output, expected);
    EXPECT_EQ(ran.status, 1);
    EXPECT_EQ(diff("new" + form, "new").output, "No difference.\nOLD  box, new\nNEW  box, new\n");
    EXPECT_EQ(diff("new" + form, "new").status, 0);
  }
}

TEST_F(Diff, OrderAndRulesOfTheirOwn) {
  make("old", json::array(), json::array(), {{"x.txt", "a 1\nb 2\n"}});
  make("new", json::array(), json::array(), {{"x.txt", "b 3\na 4\n"}});
  const auto with = [this](const std::string& rule) {
    write_file(path("rules.yaml"), "noise:\n  - {name: ours, " + rule + "}\n");
    const std::string said = diff("old", "new", "--rules rules.yaml").output;
    return said.substr(said.find("new\n") + 4);
  };
  EXPECT_EQ(with("file: x, replace: '\\d', same: [a 1 <> a 2]"),
            "\nx.txt\n  the same lines in another order\n");
  EXPECT_EQ(with("file: x, replace: '\\d', unordered: true, same: [a 1 <> a 2]"), "");
  EXPECT_EQ(with("file: x, drop: '\\d', same: [a 1 <> b 2]"), "");
  EXPECT_EQ(with("file: x, ignore: true"), "");
  EXPECT_EQ(diff("old", "gone").output, "sit: gone is not there\n");
  EXPECT_EQ(run("cd " + path("") + " && echo '{\"rows\": [1]}' > new/manifest.json").status, 0);
  EXPECT_EQ(diff("old", "new").status, 3);
  run("cd " + path("") + " && head -c 100 old.tar.xz > cut.tar.xz");
  EXPECT_EQ(diff("cut.tar.xz", "old").status, 3);
}

// Two collections of one machine have nothing to tell of each other.
TEST_F(Diff, SampleCollectedTwice) {
  ASSERT_EQ(run(EXAMPLES "/install " + path("sample")).status, 0);
  for (const std::string name : {"one", "two"}) {
    run(HOST
        " collect --only security --only validation --only logs --only environment --only "
        "capture --capture 'touch left' --format none --installation " +
        path("sample/pel") + " --output " + path(name) + " 2>/dev/null");
  }
  EXPECT_EQ(diff("one/*", "two/*").status, 0) << diff("one/*", "two/*").output;
}

}  // namespace
}  // namespace test
