#include "support/websvr_test.h"

#include <cerrno>

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using test::listing, test::stored_by, test::Texts, test::title, test::too_long, test::write_file;

using test::WebServer;

TEST_F(WebServer, ValuesAndPaths) {
  const std::string longest(255, 'v');
  const std::string base(200, 'b');
  const auto expect = [](const std::string& value, const std::vector<std::string>& texts) {
    for (const std::string& text : texts)
      EXPECT_EQ(stored_by([&](char* out) { GetConfPathName(text.c_str(), out); }), value) << text;
  };
  expect("/cgi", {"/cgi #comment", "/cgi#x"});
  expect("/a", {" \t/a\tb"});
  expect("/my cgi", {"'/my cgi' x"});
  expect("/a'b#", {"\"/a'b#\" c"});
  expect("open", {"'open\nnext", "\"open\r\n"});
  expect("a'b'", {"a'b' c"});
  expect(longest, {longest, "'" + longest + "' x"});
  expect("", {"", " \t\n/next", "''", "'", "#", longest + "v"});
  const auto absolute = [](const std::string& path, const std::string& from) {
    return stored_by([&](char* out) { MakeAbsolutePath(path.c_str(), from.c_str(), out); });
  };
  EXPECT_EQ(absolute("/a/b", "/base"), "/a/b");
  EXPECT_EQ(absolute("a/b", "/base"), "/base/a/b");
  EXPECT_EQ(absolute("", "/base"), "/base/");
  EXPECT_EQ(absolute(std::string(54, 'a'), base), base + "/" + std::string(54, 'a'));
  EXPECT_EQ(written_by([&] { EXPECT_EQ(absolute(std::string(55, 'a'), base), ""); }),
            too_long("path", base + "/" + std::string(55, 'a')));
  for (const auto& [path, result] : {std::pair{"/a", 1}, {"a/b", 0}, {"", 0}})
    EXPECT_EQ(IsAbsolutePath(path), result) << path;
  for (auto [path, stripped] :
       {Texts{"/a/", "/a"}, {"/a//", "/a/"}, {"a\\", "a"}, {"/a", "/a"}, {"/", ""}, {"", ""}}) {
    StripTrailingSlash(path.data());
    EXPECT_STREQ(path.c_str(), stripped.c_str());
  }
}

TEST_F(WebServer, ReportsThatCannotBeMade) {
  write_file(path("root/https-web/config/magnus.conf"), "");
  write_file(path("root/conf/httpd.conf"), "");
  const std::string beyond = path(std::string(256, 'r'));
  for (const int verbose : {0, 1}) {
    SetVerboseMode(verbose);
    for (const auto& [report, code] : {std::pair<const char*, int>{nullptr, 10000},
                                       {"", 10000},
                                       {beyond.c_str(), 10008},
                                       {"/nosuch/report", ENOENT},
                                       {"/dev/full", ENOSPC}}) {
      EXPECT_EQ(GetNetscapeInfo(report, root().c_str(), ""), code);
      EXPECT_EQ(GetApacheInfo(report, root().c_str()), code);
    }
    EXPECT_EQ(GetNetscapeInfo("/nosuch/report", "", ""), verbose != 0 ? ENOENT : 10025);
  }
}

class Apache : public WebServer {
 protected:
  void expect_report(const std::string& server_root, int code, const std::string& text) const {
    EXPECT_EQ(GetApacheInfo(path("report").c_str(), server_root.c_str()), code);
    EXPECT_EQ(report(), text);
  }
};

TEST_F(Apache, WholeReports) {
  ASSERT_FALSE(fs::exists("/etc/httpd/conf/httpd.conf"));
  for (const std::string& missing : {""s, root(), "/" + std::string(300, 'a')})
    expect_report(missing, 10001, "");
  const std::string conf = root() + "/conf/httpd.conf";
  const std::string start = "\n" + title("Apache Configuration") +
                            "Contents of Apache configuration file " + conf + "\n\n";
  const std::string aliases = "\n\n" + title("Apache ScriptAlias Directory Listings");
  put_unreadable(conf);
  expect_report(root(), EINVAL, start + "Failed to read " + conf + "\n");
  EXPECT_EQ(written_by([&] { FindApacheScriptAlias(conf.c_str(), root().c_str()); }), "");
  fs::remove(conf);
  fs::create_directory(conf);
  expect_report(root(), 0,
                start + aliases + "\n\nNo ScriptAlias directories found in " + conf + "\n\n");
  fs::remove(conf);
  write_file(conf, "ScriptAlias /scripts/ cgi\nListen 80 100%d");
  fs::create_directory(root() + "/cgi");
  expect_report(root(), 0,
                start + "ScriptAlias /scripts/ cgi\nListen 80 100%d" + aliases +
                    "\nDirectory listing of " + root() + "/cgi (alias /scripts/)\n" +
                    listing(root() + "/cgi"));
}

TEST_F(Apache, ScriptAliases) {
  fs::create_directory(root());
  const std::string none = "\n\nNo ScriptAlias directories found in " + path("conf") + "\n\n";
  const auto missing = [](const std::string& directory, const std::string& alias) {
    return "\nDirectory listing of " + directory + " (alias " + alias + ")\nDirectory " +
           directory + " does not exist\n";
  };
  const auto itself = [this](const std::string& alias) {
    return "\nDirectory listing of " + root() + " (alias " + alias + ")\n" + listing(root());
  };
  const auto expect = [&](const std::string& text, const std::string& from,
                          const std::string& expected) {
    write_file(path("conf"), text);
    const auto call = [&] { FindApacheScriptAlias(path("conf").c_str(), from.c_str()); };
    EXPECT_EQ(written_by(call), expected) << text;
  };
  const std::string line = "ScriptAlias /a /no/a\n";
  const std::string far(239, 'r');
  for (const auto& [text, expected] :
       {Texts{"", none},
        {"#" + line + " # x " + line +
             "ScriptAliasMatch /a /no/a\nscriptalias /a /no/a\n"
             "ScriptAlias\t/a /no/a\nScriptAlias\n",
         none},
        {"ScriptAlias /x/ /no/x/ # note\n\tScriptAlias \t /cgi-bin/\t'/no/c d/'\r\n",
         missing("/no/x", "/x/") + missing("/no/c d", "/cgi-bin/")},
        {"ScriptAlias \"/a b/\" \"/no/q\"\nScriptAlias '/a#' rel\\\nScriptAlias '/b'/no/y",
         missing("/no/q", "/a b/") + missing(root() + "/rel", "/a#") + missing("/no/y", "/b")},
        {"ScriptAlias '/open /no/a\n", itself("/open /no/a")},
        {"ScriptAlias \nScriptAlias # /no/a\n", itself("") + itself("")},
        {std::string(254, 'x') + line + std::string(253, 'x') + line, missing("/no/a", "/a")},
        {"ScriptAlias /a " + far, too_long("path", root() + "/" + far) + none}})
    expect(text, root(), expected);
  expect("ScriptAlias /a nosuch\nScriptAlias \n", "",
         missing("/nosuch", "/a") + missing("", "") + none);
}

}  // namespace
