// The page for a browser that every collection has.

#include <fstream>

#include "support/collection.h"

namespace test {
namespace {

class Page : public CollectTest {
 protected:
  [[nodiscard]] static std::string page_of(const Collected& made) {
    return read_file(made.folder / "index.html");
  }
};

TEST_F(Page, TextOfOthersStaysText) {
  const Collected made = collect(
      "--only capture --label '<b>\"x' --capture 'printf \"</pre><script>&\\\\042\\\\001\\\\377\"; "
      "echo {{host}}; head -c 64000000 /dev/zero | tr \"\\\\0\" x' --capture 'echo \"</h2>\"'");
  EXPECT_EQ(made.status, 0) << made.said;
  const std::string page = page_of(made);
  EXPECT_THAT(page, HasSubstr("\n&lt;/pre&gt;&lt;script&gt;&amp;&quot;??{{host}}"));
  EXPECT_THAT(page, HasSubstr("<dd>&lt;b&gt;&quot;x</dd>"));
  EXPECT_THAT(page, Not(HasSubstr("<script")));
  EXPECT_THAT(page, Not(HasSubstr("\"</h2>")));
  EXPECT_LT(page.size(), 100000U);
}

TEST_F(Page, LinksLeadToTheLinesThatAreWrong) {
  const Collected made = collect(sample_options());
  const std::string page = page_of(made);
  int checked = 0;
  for (const auto& problem : made.manifest.at("problems")) {
    std::ifstream file(made.folder / problem.at("file").get<std::string>());
    std::string line;
    for (int i = 0; i < problem.at("line"); ++i) std::getline(file, line);
    if (problem.at("line") == 0) continue;
    for (const auto& row : made.manifest.at("rows")) {
      if (row.at("file") != problem.at("file")) continue;
      const std::string anchor =
          row.at("id").get<std::string>() + ":" + problem.at("line").dump() + "\">";
      const std::size_t mark = page.find("<mark id=\"" + anchor);
      ASSERT_NE(mark, std::string::npos) << anchor;
      EXPECT_THAT(page, HasSubstr("href=\"#" + anchor)) << anchor;
      const std::string plain = line.substr(0, line.find_first_of("'\""));
      EXPECT_EQ(page.substr(mark + 10 + anchor.size(), plain.size()), plain);
      ++checked;
    }
  }
  EXPECT_GE(checked, 10);
  const Ran browser = run(SCRIPTS "/check-page " + (made.folder / "index.html").string() + " 2>&1");
  if (browser.status == 77) GTEST_SKIP() << browser.output;
  EXPECT_EQ(browser.status, 0) << browser.output;
}

TEST_F(Page, FullDiskCostsThePageAlone) {
  if (!mount_small(path("out"), "300k")) GTEST_SKIP() << "needs a mount namespace";
  const Collected made = collect("--only capture --capture 'yes \"&&&&&&&&\" | head -c 60000'");
  EXPECT_EQ(made.status, 1);
  const std::string no_page = "There is no index.html: No space left on device\n";
  EXPECT_THAT(made.said, HasSubstr(no_page));
  EXPECT_FALSE(fs::exists(made.folder / "index.html"));
  EXPECT_EQ(made.manifest.at("complete"), true);
}

}  // namespace
}  // namespace test
