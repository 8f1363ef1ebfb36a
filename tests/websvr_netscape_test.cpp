#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <sstream>

#include "support/websvr_test.h"

namespace {

namespace fs = std::filesystem;
using test::listing, test::stored_by, test::title, test::too_long, test::write_file;

const std::string kVerbose = "VERBOSE: \n**Verbose Mode **\n";

class Netscape : public test::WebServer {
 protected:
  [[nodiscard]] std::string conf(const std::string& entry) const {
    return root() + "/" + entry + "/config/magnus.conf";
  }
  int command(const std::string& server_root) {
    fs::remove(path("report"));
    return GetNetscapeInfo(path("report").c_str(), server_root.c_str(), "web");
  }
  // A search that fails leaves no report, or in verbose mode one that ends in `trail`.
  void expect_failure(const std::string& server_root, int code, const std::string& trail) {
    EXPECT_EQ(command(server_root), code) << server_root;
    EXPECT_EQ(report(), "") << server_root;
    SetVerboseMode(1);
    EXPECT_EQ(command(server_root), code) << server_root;
    SetVerboseMode(0);
    EXPECT_EQ(report(), kVerbose + "\n" + title("Netscape/iPlanet Configuration") + trail);
  }
  static std::string using_path(const std::string& root) {
    return "VERBOSE: Using Netscape path " + root + "\n";
  }
  static std::string checking(const std::string& name, const std::string& directory) {
    return "VERBOSE: Checking for Netscape Server name '" + name + "' in " + directory + "\n";
  }
  static std::string not_found(const std::string& root) {
    return "Failed to find server 'web' in " + root + "\n";
  }
};

TEST_F(Netscape, InstancesObjectFilesAndCgiDirectories) {
  fs::create_directory(root());
  const auto put = [this](const Row& row) { write_file(path("conf"), row.text(0)); };
  expect_rows("websvr",
              {{"instance",
                [this](const Row& row) {
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
                  std::string found = stored_by([&](char* output) {
                    code = GetNetscapeServerDir(root().c_str(), row[1], output);
                  });
                  for (const auto& entry : fs::directory_iterator(root())) {
                    if (code != SIT_SERVERS_AMBIGUOUS || !fs::exists(entry.path() / "config"))
                      continue;
                    if (found == entry.path()) found = root() + "/first";
                    break;
                  }
                  return std::to_string(code) +
                         (found.empty() ? "" : " " + found.erase(0, root().size() + 1));
                }},
               {"server id",
                [this](const Row& row) {
                  unsigned flags = 0;
                  write_file(conf("https-a"), row.text(0));
                  const int answer =
                      CheckNetscapeServerName(root().c_str(), "https-a", "web", &flags);
                  return std::to_string(answer) + std::string(flags, '!');
                }},
               {"objects",
                [&](const Row& row) {
                  put(row);
                  return stored_by([&](char* output) {
                    EXPECT_EQ(GetNetscapeObjConf(path("conf").c_str(), "/ns", output), 0);
                  });
                }},
               {"cgi", [&](const Row& row) {
                  put(row);
                  fs::create_directory(root());
                  return listed([this] { EXPECT_EQ(LogNetscapeCGIDirs(path("conf").c_str()), 0); });
                }}});
}

TEST_F(Netscape, ServerRoots) {
  write_file(path("file"), "");
  fs::create_directory(path("empty"));
  const std::string beyond = "/" + std::string(255, 'r');
  std::string deep = path("d/") + std::string(100, 'd') + "/";
  deep.resize(229, 'd');
  write_file(deep + "/https-abc/config/magnus.conf", "");
  const std::string unusable = too_long("path", deep + "/https-abc/config/magnus.conf");
  expect_failure("", 10025, "");
  expect_failure("/", 10001, using_path(""));
  expect_failure(path("missing\\"), 10001, using_path(path("missing")));
  expect_failure(path("file/"), ENOTDIR, using_path(path("file")) + not_found(path("file")));
  expect_failure(path("empty"), 10025, using_path(path("empty")) + not_found(path("empty")));
  expect_failure(beyond, 10001, too_long("server root", beyond));
  expect_failure(
      deep, 10029,
      using_path(deep) + checking("web", deep + "/https-abc") + unusable + not_found(deep));
  EXPECT_EQ(GetNetscapeInfo(path("report").c_str(), nullptr, nullptr), 10025);
  EXPECT_EQ(written_by([&] { EXPECT_EQ(LogNetscapeConfig((deep + "/https-abc").c_str()), 2); }),
            title("Configuration Files") + unusable);
}

TEST_F(Netscape, VerboseTrailOfASearch) {
  const std::string file = conf("https-a");
  const std::string begun = using_path(root()) + checking("web", root() + "/https-a");
  const std::string found = begun + "VERBOSE: File " + file + " has been found\n";
  fs::create_directories(root() + "/https-a");
  expect_failure(
      root() + "/", 10029,
      begun + "VERBOSE: Config file '" + file + "' does not exist\n\n" + not_found(root()));
  put_unreadable(file);
  expect_failure(
      root(), 10028,
      found + "VERBOSE: Failed to open config file " + file + ", errno=22\n\n" + not_found(root()));
  fs::remove(file);
  write_file(file, "Port 80\n ServerID https-x%d\r\nServerID https-web\n");
  expect_failure(root(), 10028,
                 found + "VERBOSE: Found 'ServerID' in conf file, line is:\n  " +
                     " ServerID https-x%d\r\n\nVERBOSE: Comparing 'x%d' to 'web'\n" +
                     not_found(root()));
}

TEST_F(Netscape, RootThatBreaksOffWhileItIsRead) {
  fs::create_directory(root());
  const pid_t child = ::fork();
  if (child == 0) {
    sock_filter break_reading[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                                   BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_getdents64, 0, 1),
                                   BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EIO),
                                   BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
    const sock_fprog program{std::size(break_reading), break_reading};
    ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
    std::array<char, SIT_PATH_BYTES> output{};
    ::_exit(GetNetscapeServerDir(root().c_str(), "", output.data()));
  }
  int status = -1;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), EIO);
}

TEST_F(Netscape, WholeReport) {
  const std::string instance = root() + "/https-web";
  const std::string config = instance + "/config/";
  const std::string cgi = path("cgi");
  const auto file = [](const std::string& name, const std::string& text) {
    write_file(name, text);
    return "Contents of " + name + ":\n\n" + text + "\n\n";
  };
  write_file(instance + "/start", "#!/bin/sh\n");
  write_file(cgi + "/script", "");
  const std::string expected =
      "\n" + title("Netscape/iPlanet Configuration") + title("Configuration Files") +
      file(conf("https-web"), "ServerID https-web\nLoadObjects  'my o' # x\nLoadObjects no\n") +
      file(config + "my o",
           "NameTrans fn=\"pfx2dir\" from=\"/cgi-bin\" dir='" + cgi + "/' name=\"cgi\"\n") +
      file(config + "servlets.properties", "servlets 100%d\n") +
      file(config + "rules.properties", "rules") + title("CGI directories") +
      "Listing of CGI directories configured in " + config + "my o\n\n\nDirectory listing of " +
      cgi + " (alias /cgi-bin)\n" + listing(cgi) + "\n\n" + title("Startup Script") +
      "Contents of " + instance + "/start\n\n#!/bin/sh\n";
  for (const char* tail : {"", "/", "\\"}) {
    EXPECT_EQ(command(root() + tail), 0);
    EXPECT_EQ(report(), expected);
  }
}

TEST_F(Netscape, BrokenInstances) {
  const std::string instance = root() + "/https-web";
  const std::string config = instance + "/config/";
  const std::string magnus = conf("https-web");
  const auto expect = [&](int code, const std::string& text) {
    EXPECT_EQ(written_by([&] { EXPECT_EQ(LogNetscapeConfig(instance.c_str()), code); }),
              title("Configuration Files") + text);
  };
  expect(2, magnus + " does not exist, aborting\n\n");

  const std::string contents = "Contents of " + magnus + ":\n\n";
  const std::string missing = ".properties does not exist\n\n";
  const std::string cgi = "\n\n" + title("CGI directories");
  const std::string startup = "\n\n" + title("Startup Script");
  const std::string nothing_else = config + "servlets" + missing + config + "rules" + missing +
                                   cgi + "Failed to locate object file for CGI directories\n" +
                                   startup + "Unable to find startup script " + instance +
                                   "/start\n";
  put_unreadable(magnus);
  expect(0, contents + "Failed to read config file " + magnus + ", error 22\n\n" + nothing_else);
  fs::remove(magnus);
  const std::string name(241, 'o');
  write_file(magnus, "LoadObjects " + name + "\n");
  expect(0, contents + "LoadObjects " + name + "\n" + too_long("path", config + name) +
                "Unable to determine object file from " + magnus + "\n\n" + nothing_else);
  write_file(magnus, "");
  for (const char* file : {"config/servlets.properties", "config/rules.properties", "start"})
    put_unreadable(instance + "/" + file);
  const auto failed = [](const std::string& file, const std::string& error) {
    return "\n\nContents of " + file + ":\n\nFailed to read config file " + file + ", error " +
           error + "\n\n";
  };
  const std::string objects = config + "obj.conf";
  const std::string start = instance + "/start";
  expect(0, contents + failed(objects, "2") + failed(config + "servlets.properties", "22") +
                failed(config + "rules.properties", "22") + cgi +
                "Listing of CGI directories configured in " + objects + "\nUnable to open " +
                objects + " for reading, errno=2\nFailed to log CGI dirs from " + objects + "\n" +
                startup + "Contents of " + start + "\n\nFailed to open " + start +
                " for reading, error is 22\n");
}

}  // namespace
