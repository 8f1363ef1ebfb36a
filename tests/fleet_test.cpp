// "sit fleet": what it tells of many collections.

#include <nlohmann/json.hpp>

#include "support/sit_test.h"

namespace test {
namespace {

using nlohmann::json;

class Fleet : public SitTest {
 protected:
  void make(const std::string& folder, const std::string& label, const std::string& started,
            const std::string& tool, const std::vector<std::string>& findings,
            const json& settings = json::object()) const {
    json problems = json::array();
    for (const std::string& finding : findings) problems.push_back({{"text", finding}});
    const json manifest{{"host", "box"},        {"label", label},
                        {"started", started},   {"tool", tool},
                        {"plugin", "11.6"},     {"complete", findings.size() < 2},
                        {"problems", problems}, {"settings", settings}};
    write_file(path("fleet/" + folder + "/manifest.json"), manifest.dump());
  }
  [[nodiscard]] Ran fleet() const {
    return run("cd " + path("") + " && " HOST " fleet fleet 2>&1");
  }
};

TEST_F(Fleet, SharedFindingsDifferencesAndWhoIsMissing) {
  make("a # b", "web1", "2026-11-25T10:00:00Z", "11.6", {"It ends in 12 days, on 2026-12-07"},
       {{"LANG", "C"}, {"swappiness", "60"}, {"odd", 1}, {"sit", "not this"}});
  write_file(path("fleet/a # b/index.html"), "");
  make("b", "web2", "2026-11-25T10:00:00Z", "11.6", {"It ends in 1 day, on 2026-11-26", "Own"},
       {{"swappiness", "10"}});
  make("deep/old", "web2", "2026-11-24T10:00:00Z", "11.4", {});
  make("c", "<script>", "2026-11-25T10:00:00Z", "11.5", {});
  run("cd " + path("fleet") +
      " && tar cJf x.tar.xz c && rm -r c && tar cJ b | head -c 200 > "
      "cut.tar.xz && ln -s b link && mkfifo f.tar.gz && mkdir empty && echo '[1]' > a.txt");
  write_file(path("fleet/fleet-status.json"),
             json{{{"host", "web1"}, {"state", "failed"}, {"why", "never counted"}},
                  {{"host", "db1"}, {"state", "unreachable"}, {"why", "no route"}},
                  {{"host", "db2"}, {"state", "failed"}, {"why", "exit status 3"}},
                  17}
                 .dump());
  const Ran ran = fleet();
  EXPECT_EQ(ran.status, 1);
  EXPECT_EQ(ran.output,
            "fleet/fleet.txt\n"
            "6 machines: 2 complete, 1 partial, 1 unreadable, 1 failed, 1 unreachable\n");
  std::string text = read_file(path("fleet/fleet.txt"));
  const std::size_t why = text.find("unreadable, ", text.find("MACHINES\n")) + 12;
  text.replace(why, text.find(", 0 findings", why) - why, "WHY");
  EXPECT_EQ(text,
            "SIT FLEET\n=========\n"
            "6 machines: 2 complete, 1 partial, 1 unreadable, 1 failed, 1 unreachable\n"
            "\nFINDINGS THAT MACHINES SHARE\n============================\n"
            "2 of 6: It ends in 12 days, on 2026-12-07\n    web1, web2\n1 of 6: Own\n    web2\n"
            "\nWHERE MACHINES DIFFER\n=====================\n"
            "LANG\n    1  C: web1\n    2  none: <script>, web2\n"
            "sit\n    1  11.5: <script>\n    2  11.6: web1, web2\n"
            "swappiness\n    1  none: <script>\n    1  10: web2\n    1  60: web1\n"
            "\nMACHINES\n========\n"
            "<script>: complete, 0 findings, 2026-11-25T10:00:00Z, x.tar.xz\n"
            "cut.tar.xz: unreadable, WHY, 0 findings, cut.tar.xz\n"
            "db1: unreachable, no route, 0 findings\ndb2: failed, exit status 3, 0 findings\n"
            "web1: complete, 1 finding, 2026-11-25T10:00:00Z, a # b\n"
            "web2: partial, 2 findings, 2026-11-25T10:00:00Z, b\n"
            "passed over, for there is a newer one of its machine: deep/old\n");
  const json all = json::parse(read_file(path("fleet/fleet.json")));
  EXPECT_EQ(all.at("findings").at(0).at("machines"), json({"web1", "web2"}));
  const std::string page = read_file(path("fleet/fleet.html"));
  EXPECT_THAT(page, Not(HasSubstr("<script")));
  EXPECT_THAT(page, HasSubstr("<tr id=\"m4\"><td class=\"good\">complete</td>"
                              "<td><a href=\"./a%20%23%20b/index.html\">web1</a>"));
  EXPECT_THAT(page, HasSubstr("<a href=\"#m4\">web1</a> <a href=\"#m5\">web2</a> </span>"));
  const Ran browser = run(SCRIPTS "/check-page " + path("fleet/fleet.html") + " 2>&1");
  EXPECT_TRUE(browser.status == 0 || browser.status == 77) << browser.output;
}

TEST_F(Fleet, FoldersThatHoldNone) {
  EXPECT_EQ(fleet().output, "sit: fleet: No such file or directory\n");
  fs::create_directory(path("fleet"));
  EXPECT_EQ(fleet().output, "sit: fleet holds no collections\n");
  EXPECT_EQ(fleet().status, 3);
  make("a", "web1", "x", "11.6", {});
  EXPECT_EQ(fleet().status, 0);
}

}  // namespace
}  // namespace test
