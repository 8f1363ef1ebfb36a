#include "support/websvr_test.h"

#include <array>
#include <cerrno>
#include <filesystem>

namespace {

namespace fs = std::filesystem;
using test::title;
using test::too_long;
using test::WebServer;
using test::write_file;

TEST_F(WebServer, ValuesAndPaths) {
  const std::string longest(255, 'v');
  using Pair = std::pair<std::string, std::string>;
  const auto value_of = [](const std::string& text) {
    std::array<char, SIT_PATH_BYTES> output{'?'};
    GetConfPathName(text.c_str(), output.data());
    return std::string(output.data());
  };
  for (const auto& [text, value] : {Pair{"/cgi #comment", "/cgi"},
                                    {"/cgi#x", "/cgi"},
                                    {" \t/a\tb", "/a"},
                                    {"'/my cgi' x", "/my cgi"},
                                    {"\"/a'b#\" c", "/a'b#"},
                                    {"'open end\nnext", "open end"},
                                    {"\"open\r\n", "open"},
                                    {"a'b' c", "a'b'"},
                                    {longest, longest},
                                    {"'" + longest + "' x", longest}}) {
    EXPECT_EQ(value_of(text), value);
  }
  for (const std::string& text : {std::string(), std::string(" \t\n/next"), std::string("''"),
                                  std::string("'"), std::string("#"), longest + "v"}) {
    EXPECT_EQ(value_of(text), "") << text;
  }

  const std::string base(200, 'b');
  const auto absolute = [](const std::string& path, const std::string& from) {
    std::array<char, SIT_PATH_BYTES> output{'?'};
    MakeAbsolutePath(path.c_str(), from.c_str(), output.data());
    return std::string(output.data());
  };
  EXPECT_EQ(absolute("/a/b", "/base"), "/a/b");
  EXPECT_EQ(absolute("a/b", "/base"), "/base/a/b");
  EXPECT_EQ(absolute("", "/base"), "/base/");
  EXPECT_EQ(absolute(std::string(54, 'a'), base), base + "/" + std::string(54, 'a'));
  EXPECT_EQ(written_by([&] { EXPECT_EQ(absolute(std::string(55, 'a'), base), ""); }),
            too_long("path", base + "/" + std::string(55, 'a')));
  EXPECT_EQ(IsAbsolutePath("/a"), 1);
  EXPECT_EQ(IsAbsolutePath("a/b"), 0);
  EXPECT_EQ(IsAbsolutePath(""), 0);

  for (auto [path, stripped] :
       {Pair{"/a/", "/a"}, {"/a//", "/a/"}, {"a\\", "a"}, {"/a", "/a"}, {"/", ""}, {"", ""}}) {
    StripTrailingSlash(path.data());
    EXPECT_STREQ(path.c_str(), stripped.c_str());
  }
}

TEST_F(WebServer, ReportsThatCannotBeMade) {
  write_file(path("ns/https-web/config/magnus.conf"), "");
  write_file(path("apache/conf/httpd.conf"), "");
  const std::string beyond = path(std::string(256, 'r'));
  for (const int verbose : {0, 1}) {
    SetVerboseMode(verbose);
    for (const auto& [report, code] : {std::pair<const char*, int>{nullptr, 10000},
                                       {"", 10000},
                                       {beyond.c_str(), 10008},
                                       {"/nosuch/report", ENOENT},
                                       {"/dev/full", ENOSPC}}) {
      EXPECT_EQ(GetNetscapeInfo(report, path("ns").c_str(), ""), code);
      EXPECT_EQ(GetApacheInfo(report, path("apache").c_str()), code);
    }
    EXPECT_EQ(GetNetscapeInfo("/nosuch/report", "", ""), verbose != 0 ? ENOENT : 10025);
  }
}

class Apache : public WebServer {
 protected:
  [[nodiscard]] std::string root() const { return path("apache"); }
  [[nodiscard]] std::string conf() const { return root() + "/conf/httpd.conf"; }
  int command(const std::string& server_root) {
    return GetApacheInfo(path("report").c_str(), server_root.c_str());
  }
  [[nodiscard]] std::string start() const {
    return "\n" + title("Apache Configuration") + "Contents of Apache configuration file " +
           conf() + "\n\n";
  }
};

TEST_F(Apache, WholeReport) {
  const std::string text = "ScriptAlias /scripts/ cgi\nListen 80 100%d";
  write_file(conf(), text);
  fs::create_directory(root() + "/cgi");
  EXPECT_EQ(command(root()), 0);
  EXPECT_EQ(report(), start() + text + "\n\n" + title("Apache ScriptAlias Directory Listings") +
                          "\nDirectory listing of " + root() + "/cgi (alias /scripts/)\n" +
                          listing(root() + "/cgi"));
}

TEST_F(Apache, ConfigurationThatCannotBeRead) {
  ASSERT_FALSE(fs::exists("/etc/httpd/conf/httpd.conf"));
  for (const std::string& missing : {std::string(), root(), "/" + std::string(300, 'a')}) {
    EXPECT_EQ(command(missing), 10001);
    EXPECT_EQ(report(), "");
  }
  put_unreadable(conf());
  EXPECT_EQ(command(root()), EINVAL);
  EXPECT_EQ(report(), start() + "Failed to read " + conf() + "\n");
  EXPECT_EQ(written_by([&] { FindApacheScriptAlias(conf().c_str(), root().c_str()); }), "");
  fs::remove(conf());
  fs::create_directory(conf());
  EXPECT_EQ(command(root()), 0);
  EXPECT_EQ(report(), start() + "\n\n" + title("Apache ScriptAlias Directory Listings") +
                          "\n\nNo ScriptAlias directories found in " + conf() + "\n\n");
}

TEST_F(Apache, ScriptAliases) {
  fs::create_directory(root());
  const std::string none = "\n\nNo ScriptAlias directories found in " + path("conf") + "\n\n";
  const auto missing = [](const std::string& directory, const std::string& alias) {
    return "\nDirectory listing of " + directory + " (alias " + alias + ")\nDirectory " +
           directory + " does not exist\n";
  };
  const std::string itself = "\nDirectory listing of " + root() + " (alias )\n" + listing(root());
  const std::string relative(239, 'r');
  const std::pair<std::string, std::string> cases[] = {
      {"", none},
      {"#ScriptAlias /a /no/a\n # x ScriptAlias /a /no/a\nScriptAliasMatch /a /no/a\n"
       "scriptalias /a /no/a\nScriptAlias\t/a /no/a\nScriptAlias\n",
       none},
      {"ScriptAlias /x/ /no/x/ # note\n\tScriptAlias \t /cgi-bin/\t'/no/c d/'\r\n",
       missing("/no/x", "/x/") + missing("/no/c d", "/cgi-bin/")},
      {"ScriptAlias \"/a b/\" \"/no/q\"\nScriptAlias '/a#' rel\\\nScriptAlias '/b'/no/y",
       missing("/no/q", "/a b/") + missing(root() + "/rel", "/a#") + missing("/no/y", "/b")},
      {"ScriptAlias '/open /no/a\n",
       "\nDirectory listing of " + root() + " (alias /open /no/a)\n" + listing(root())},
      {"ScriptAlias \nScriptAlias # /no/a\n", itself + itself},
      {std::string(254, 'x') + "ScriptAlias /a /no/a\n" + std::string(253, 'x') +
           "ScriptAlias /a /no/b\n",
       missing("/no/a", "/a")},
      {"ScriptAlias /a " + relative, too_long("path", root() + "/" + relative) + none}};
  for (const auto& [text, expected] : cases) {
    write_file(path("conf"), text);
    EXPECT_EQ(written_by([&] { FindApacheScriptAlias(path("conf").c_str(), root().c_str()); }),
              expected)
        << text;
  }
  write_file(path("conf"), "ScriptAlias /a nosuch\nScriptAlias \n");
  EXPECT_EQ(written_by([&] { FindApacheScriptAlias(path("conf").c_str(), ""); }),
            missing("/nosuch", "/a") + missing("", "") + none)
      << "without a server root the last directory is empty";
}

}  // namespace
