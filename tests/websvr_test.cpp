#include "support/websvr_test.h"

#include <cerrno>

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using test::listing, test::stored_by, test::title, test::write_file;

using test::WebServer;

TEST_F(WebServer, ValuesPathsAndScriptAliases) {
  fs::create_directory(root());
  expect_rows("websvr",
              {{"value",
                [](const Row& row) {
                  return stored_by([&](char* output) { GetConfPathName(row[0], output); });
                }},
               {"absolute",
                [this](const Row& row) {
                  std::string path;
                  const std::string report = written_by([&] {
                    path =
                        stored_by([&](char* output) { MakeAbsolutePath(row[0], row[1], output); });
                  });
                  return std::to_string(IsAbsolutePath(row[0])) + " " + path + report;
                }},
               {"stripped",
                [](const Row& row) {
                  std::string path = row.text(0);
                  StripTrailingSlash(path.data());
                  return std::string(path.c_str());
                }},
               {"alias", [this](const Row& row) {
                  write_file(path("conf"), row.text(1));
                  return listed([&] { FindApacheScriptAlias(path("conf").c_str(), row[0]); });
                }}});
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

}  // namespace
