#include "support/websvr_test.h"

#include <cerrno>
#include <cstring>

namespace test {
namespace {

TEST_F(WebServer, ValuesPathsAndScriptAliases) {
  fs::create_directory(root());
  expect_rows("websvr", "value", [](const Row& row) {
    return stored_by([&](char* output) { GetConfPathName(row[0], output); });
  });
  expect_rows("websvr", "absolute", [this](const Row& row) {
    std::string path;
    const std::string report = written_by(
        [&] { path = stored_by([&](char* output) { MakeAbsolutePath(row[0], row[1], output); }); });
    return std::to_string(IsAbsolutePath(row[0])) + " " + path + report;
  });
  expect_rows("websvr", "stripped", [](const Row& row) {
    std::string path = row.text(0);
    StripTrailingSlash(path.data());
    path.resize(std::strlen(path.c_str()));
    return path;
  });
  expect_rows("websvr", "alias", [this](const Row& row) {
    write_file(path("conf"), row.text(1));
    return listed([&] { FindApacheScriptAlias(path("conf").c_str(), row[0]); });
  });
}

TEST_F(WebServer, ApacheConfigurationsThatCannotBeRead) {
  ASSERT_FALSE(fs::exists("/etc/httpd/conf/httpd.conf"));
  const auto expect_report = [this](const std::string& from, int code, const std::string& text) {
    EXPECT_EQ(GetApacheInfo(path("report").c_str(), from.c_str()), code);
    EXPECT_EQ(report(), text);
  };
  for (const std::string& missing : {std::string(), root(), "/" + std::string(300, 'a')})
    expect_report(missing, 10001, "");
  const std::string conf = root() + "/conf/httpd.conf";
  const std::string start = "\n" + title("Apache Configuration") +
                            "Contents of Apache configuration file " + conf + "\n\n";
  put_unreadable(conf);
  expect_report(root(), EINVAL, start + "Failed to read " + conf + "\n");
  EXPECT_EQ(written_by([&] { FindApacheScriptAlias(conf.c_str(), root().c_str()); }), "");
  fs::remove(conf);
  fs::create_directory(conf);
  expect_report(root(), 0,
                start + no_file(conf) + "\n\n" + title("Apache ScriptAlias Directory Listings") +
                    no_file(conf) + "\n\nNo ScriptAlias directories found in " + conf + "\n\n");
}

}  // namespace
}  // namespace test
