#include <sys/syscall.h>

#include <cerrno>
#include <sstream>

#include "support/websvr_test.h"

namespace test {
namespace {

class Netscape : public WebServer {
 protected:
  [[nodiscard]] std::string conf(const std::string& entry) const {
    return root() + "/" + entry + "/config/magnus.conf";
  }
  int command(const std::string& server_root) {
    fs::remove(path("report"));
    return GetNetscapeInfo(path("report").c_str(), server_root.c_str(), "web");
  }
};

TEST_F(Netscape, InstancesObjectFilesAndCgiDirectories) {
  fs::create_directory(root());
  const auto put = [this](const Row& row) { write_file(path("conf"), row.text(0)); };
  expect_rows("websvr", "instance", [this](const Row& row) {
    fs::remove_all(root());
    fs::create_directory(root());
    std::istringstream entries(row.text(0));
    for (std::string entry; entries >> entry;) {
      const std::size_t equals = entry.find('=');
      const std::string id = entry.substr(equals + 1);
      entry.resize(equals);
      fs::create_directory(root() + "/" + entry);
      if (id != "!") write_file(conf(entry), nsSrvId + id);
    }
    int code = -1;
    std::string found = stored_by(
        [&](char* output) { code = GetNetscapeServerDir(root().c_str(), row[1], output); });
    for (const auto& entry : fs::directory_iterator(root())) {
      if (code != SIT_SERVERS_AMBIGUOUS || !fs::exists(entry.path() / "config")) continue;
      if (found == entry.path()) found = root() + "/first";
      break;
    }
    return std::to_string(code) + (found.empty() ? "" : " " + found.erase(0, root().size() + 1));
  });
  expect_rows("websvr", "server id", [this](const Row& row) {
    unsigned flags = 0;
    write_file(conf("https-a"), row.text(0));
    const int answer = CheckNetscapeServerName(root().c_str(), "https-a", "web", &flags);
    return std::to_string(answer) + std::string(flags, '!');
  });
  expect_rows("websvr", "objects", [&](const Row& row) {
    put(row);
    return stored_by([&](char* output) {
      EXPECT_EQ(GetNetscapeObjConf(path("conf").c_str(), "/ns", output), 0);
    });
  });
  expect_rows("websvr", "cgi", [&](const Row& row) {
    put(row);
    fs::create_directory(root());
    return listed([this] { EXPECT_EQ(LogNetscapeCGIDirs(path("conf").c_str()), 0); });
  });
}

// A search that fails leaves no report, or in verbose mode one with the trail of the search.
TEST_F(Netscape, SearchesThatFailAndBrokenInstances) {
  const auto put = [](const std::string& file, const std::string& content) {
    fs::remove(file);
    if (content == "!") put_unreadable(file);
    if (content.size() > 1) write_file(file, content);
  };
  const std::string opening =
      "VERBOSE: \n**Verbose Mode **\n\n" + title("Netscape/iPlanet Configuration");
  write_file(path("file"), "");
  fs::create_directories(root() + "/https-web");
  expect_rows("websvr", "search", [&](const Row& row) {
    put(conf("https-web"), row.text(1));
    const int code = command(row.text(0));
    EXPECT_EQ(report(), "") << row.text(0);
    SetVerboseMode(1);
    EXPECT_EQ(command(row.text(0)), code) << row.text(0);
    SetVerboseMode(0);
    EXPECT_THAT(report(), StartsWith(opening)) << row.text(0);
    return std::to_string(code) + " " + report().substr(opening.size());
  });
  expect_rows("websvr", "broken", [&](const Row& row) {
    const std::string instance = root() + "/https-web";
    put(conf("https-web"), row.text(1));
    for (const char* file : {"servlets.properties", "rules.properties", "../start"}) {
      put(instance + "/config/" + file, row.text(0));
    }
    std::string code;
    const std::string text =
        written_by([&] { code = std::to_string(LogNetscapeConfig(instance.c_str())); });
    return code + " " + text;
  });
  std::string deep = path("d/") + std::string(100, 'd') + "/";
  deep.resize(229, 'd');
  write_file(deep + "/https-abc/config/magnus.conf", "");
  EXPECT_EQ(command(deep), 10029);
  EXPECT_EQ(
      written_by([&] { EXPECT_EQ(LogNetscapeConfig((deep + "/https-abc").c_str()), 2); }),
      title("Configuration Files") + too_long("path", deep + "/https-abc/config/magnus.conf"));
  char none[SIT_PATH_BYTES];
  EXPECT_EQ(written_by([&] { EXPECT_EQ(GetNetscapeObjConf("/nosuch", "", none), ENOENT); }),
            "Error opening /nosuch for reading, errno = 2\n");
  EXPECT_EQ(GetNetscapeInfo(path("report").c_str(), nullptr, nullptr), 10025);
  EXPECT_EQ(GetNetscapeInfo("/nosuch/report", "", ""), 10025);
  SetVerboseMode(1);
  EXPECT_EQ(GetNetscapeInfo("/nosuch/report", "", ""), ENOENT);
}

TEST_F(Netscape, RootThatBreaksOffWhileItIsRead) {
  fs::create_directory(root());
  const auto host = [this] {
    refuse(SYS_getdents64, EIO);
    char output[SIT_PATH_BYTES] = "";
    return GetNetscapeServerDir(root().c_str(), "", output);
  };
  EXPECT_EQ(in_child(host), EIO);
}

}  // namespace
}  // namespace test
