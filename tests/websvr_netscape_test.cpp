#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <filesystem>

#include "support/websvr_test.h"

namespace {

namespace fs = std::filesystem;
using test::title;
using test::too_long;
using test::write_file;

constexpr const char* kVerboseStart = "VERBOSE: \n**Verbose Mode **\n";

class Netscape : public test::WebServer {
 protected:
  [[nodiscard]] std::string root() const { return path("ns"); }
  [[nodiscard]] std::string conf(const std::string& entry) const {
    return root() + "/" + entry + "/config/magnus.conf";
  }
  int command(const std::string& server_root, const std::string& name) {
    fs::remove(path("report"));
    return GetNetscapeInfo(path("report").c_str(), server_root.c_str(), name.c_str());
  }
  // Searches in silence, which must leave no report, then in verbose mode; returns that report.
  std::string failed_search(const std::string& server_root, int code) {
    EXPECT_EQ(command(server_root, "web"), code) << server_root;
    EXPECT_EQ(report(), "") << server_root;
    SetVerboseMode(1);
    EXPECT_EQ(command(server_root, "web"), code) << server_root;
    SetVerboseMode(0);
    return report();
  }
  // What that report holds.
  static std::string search_report(const std::string& trail) {
    return kVerboseStart + ("\n" + title("Netscape/iPlanet Configuration")) + trail;
  }
  static std::string using_path(const std::string& root) {
    return "VERBOSE: Using Netscape path " + root + "\n";
  }
  static std::string not_found(const std::string& root) {
    return "Failed to find server 'web' in " + root + "\n";
  }
};

TEST_F(Netscape, WhichInstanceIsFound) {
  struct Entry {
    const char* name;
    const char* id;  // null for an instance without magnus.conf
  };
  struct Case {
    std::vector<Entry> entries;
    const char* server_name;
    int code;
    const char* found = nullptr;
  };
  for (const auto& [entries, server_name, code, found] :
       {Case{{}, "", 10025},
        {{{"https-admserv", "web"}, {"http-a", "web"}, {"xhttps-a", "web"}}, "web", 10025},
        {{{"https-", ""}, {"https-admserv", ""}}, "", 0, "https-"},
        {{{"https-admserv2", "web"}}, "web", 0, "https-admserv2"},
        {{{"https-a", ""}, {"https-b", ""}}, "", 10027},
        {{{"https-a", "web"}, {"https-b", "web"}, {"https-c", nullptr}}, "web", 10027},
        {{{"https-a", "web"}, {"https-b", "web2"}}, "web2", 0, "https-b"},
        {{{"https-a", "x"}, {"https-b", nullptr}}, "web", 10029},
        {{{"https-a", "x"}, {"https-b", "y"}}, "web", 10028},
        {{{"https-a", "web"}, {"https-b", nullptr}}, "web", 0, "https-a"}}) {
    fs::remove_all(root());
    fs::create_directory(root());
    for (const Entry& entry : entries) {
      fs::create_directories(root() + "/" + entry.name);
      if (entry.id != nullptr) write_file(conf(entry.name), std::string(nsSrvId) + entry.id);
    }
    std::array<char, SIT_PATH_BYTES> output{'?'};
    EXPECT_EQ(GetNetscapeServerDir(root().c_str(), server_name, output.data()), code);
    std::string first = found == nullptr ? "" : root() + "/" + found;
    if (code == SIT_SERVERS_AMBIGUOUS) {
      for (const fs::directory_entry& entry : fs::directory_iterator(root())) {
        if (first.empty() && fs::exists(entry.path() / "config")) first = entry.path();
      }
    }
    EXPECT_EQ(output.data(), first);
  }
}

TEST_F(Netscape, WhichServerIdIsMeant) {
  using namespace std::string_literals;
  const std::string web = "ServerID https-web";
  const auto answer = [&](const std::string& text) {
    write_file(conf("https-a"), text);
    unsigned flags = 0;
    const int result = CheckNetscapeServerName(root().c_str(), "https-a", "web", &flags);
    EXPECT_EQ(flags, 0U);
    return result;
  };
  const auto behind = [&web](std::size_t length) { return std::string(length, 'x') + web; };
  for (const std::string& text :
       {web, "Port 80\n" + web + "\nUser x\n", web + "\r\n", "# " + web, web + "\nServerID https-x",
        web + "\0z\n"s, "a\0b\n"s + web, behind(236), behind(254), behind(4826)}) {
    EXPECT_EQ(answer(text), 1) << text;
  }
  for (const std::string& text :
       {""s, web + "2", web + " ", "ServerID https-we"s, "ServerID https-WEB"s, "ServerID web"s,
        "ServerID https-x\n" + web, "a\0"s + web, behind(237), behind(253)}) {
    EXPECT_EQ(answer(text), 0) << text;
  }
}

TEST_F(Netscape, ServerRoots) {
  write_file(path("file"), "");
  fs::create_directory(path("empty"));
  const std::string beyond = "/" + std::string(255, 'r');
  std::string deep = path("d/") + std::string(100, 'd') + "/";
  deep.resize(229, 'd');
  write_file(deep + "/https-abc/config/magnus.conf", "");
  const std::string unusable = too_long("path", deep + "/https-abc/config/magnus.conf");
  struct Case {
    std::string root;
    int code;
    std::string trail;
  };
  for (const auto& [root, code, trail] :
       {Case{"", 10025, ""},
        {"/", 10001, using_path("")},
        {path("missing\\"), 10001, using_path(path("missing"))},
        {path("file/"), ENOTDIR, using_path(path("file")) + not_found(path("file"))},
        {path("empty"), 10025, using_path(path("empty")) + not_found(path("empty"))},
        {beyond, 10001, too_long("server root", beyond)},
        {deep, 10029,
         using_path(deep) + "VERBOSE: Checking for Netscape Server name 'web' in " + deep +
             "/https-abc\n" + unusable + not_found(deep)}}) {
    EXPECT_EQ(failed_search(root, code), search_report(trail));
  }
  EXPECT_EQ(GetNetscapeInfo(path("report").c_str(), nullptr, nullptr), 10025);
  EXPECT_EQ(written_by([&] { EXPECT_EQ(LogNetscapeConfig((deep + "/https-abc").c_str()), 2); }),
            title("Configuration Files") + unusable);
}

TEST_F(Netscape, VerboseTrailOfASearch) {
  const std::string file = conf("https-a");
  const std::string checking = using_path(root()) +
                               "VERBOSE: Checking for Netscape Server name 'web' in " + root() +
                               "/https-a\n";
  const std::string found = "VERBOSE: File " + file + " has been found\n";
  fs::create_directories(root() + "/https-a");
  EXPECT_EQ(failed_search(root() + "/", 10029),
            search_report(checking + "VERBOSE: Config file '" + file + "' does not exist\n\n" +
                          not_found(root())));
  put_unreadable(file);
  EXPECT_EQ(failed_search(root(), 10028),
            search_report(checking + found + "VERBOSE: Failed to open config file " + file +
                          ", errno=22\n\n" + not_found(root())));
  fs::remove(file);
  write_file(file, "Port 80\n ServerID https-x%d\r\nServerID https-web\n");
  const std::string id_line = "VERBOSE: Found 'ServerID' in conf file, line is:\n  ";
  EXPECT_EQ(failed_search(root(), 10028),
            search_report(checking + found + id_line + " ServerID https-x%d\r\n\n" +
                          "VERBOSE: Comparing 'x%d' to 'web'\n" + not_found(root())));
  SetVerboseMode(1);
  const auto accepted = [&](const char* name) {
    return written_by(
        [&] { EXPECT_EQ(CheckNetscapeServerName(root().c_str(), "https-a", name, nullptr), 1); });
  };
  EXPECT_EQ(accepted("x%d"), kVerboseStart +
                                 ("VERBOSE: Checking for Netscape Server name 'x%d' in " + root()) +
                                 "/https-a\n" + found + id_line + " ServerID https-x%d\r\n\n" +
                                 "VERBOSE: Comparing 'x%d' to 'x%d'\n"
                                 "VERBOSE: Found server x%d, as required\n");
  EXPECT_EQ(accepted(""), kVerboseStart +
                              ("VERBOSE: Checking for Netscape Server name '' in " + root()) +
                              "/https-a\n" + found +
                              "VERBOSE: srvname is empty (no -wnsrv param?), assuming this to be "
                              "correct server\n\n");
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
  const std::string magnus = "ServerID https-web\nLoadObjects  'my obj.conf' # x\nLoadObjects no\n";
  const std::string objects =
      "NameTrans fn=\"pfx2dir\" from=\"/cgi-bin\" dir='" + path("cgi") + "/' name=\"cgi\"\n";
  write_file(conf("https-web"), magnus);
  write_file(config + "my obj.conf", objects);
  write_file(config + "servlets.properties", "servlets 100%d\n");
  write_file(config + "rules.properties", "rules");
  write_file(instance + "/start", "#!/bin/sh\n");
  write_file(path("cgi/script"), "");
  std::string expected = "\n" + title("Netscape/iPlanet Configuration");
  expected += title("Configuration Files");
  expected += "Contents of " + conf("https-web") + ":\n\n" + magnus;
  expected += "\n\nContents of " + config + "my obj.conf:\n\n" + objects;
  expected += "\n\nContents of " + config + "servlets.properties:\n\nservlets 100%d\n";
  expected += "\n\nContents of " + config + "rules.properties:\n\nrules";
  expected += "\n\n" + title("CGI directories");
  expected += "Listing of CGI directories configured in " + config + "my obj.conf\n";
  expected += "\n\nDirectory listing of " + path("cgi") + " (alias /cgi-bin)\n";
  expected += listing(path("cgi")) + "\n\n" + title("Startup Script");
  expected += "Contents of " + instance + "/start\n\n#!/bin/sh\n";
  for (const char* tail : {"", "/", "\\"}) {
    EXPECT_EQ(command(root() + tail, "web"), 0);
    EXPECT_EQ(report(), expected);
  }
}

TEST_F(Netscape, BrokenInstances) {
  const std::string instance = root() + "/https-web";
  const std::string config = instance + "/config/";
  const std::string magnus = conf("https-web");
  const auto written = [&](int code) {
    return written_by([&] { EXPECT_EQ(LogNetscapeConfig(instance.c_str()), code); });
  };
  const std::string heading = title("Configuration Files");
  const std::string contents = heading + "Contents of " + magnus + ":\n\n";
  EXPECT_EQ(written(2), heading + magnus + " does not exist, aborting\n\n");

  const std::string nothing_else =
      config + "servlets.properties does not exist\n\n" + config +
      "rules.properties does not exist\n\n\n\n" + title("CGI directories") +
      "Failed to locate object file for CGI directories\n\n\n" + title("Startup Script") +
      "Unable to find startup script " + instance + "/start\n";
  put_unreadable(magnus);
  EXPECT_EQ(written(0),
            contents + "Failed to read config file " + magnus + ", error 22\n\n" + nothing_else);
  fs::remove(magnus);
  const std::string name(241, 'o');
  write_file(magnus, "LoadObjects " + name + "\n");
  EXPECT_EQ(written(0), contents + "LoadObjects " + name + "\n" + too_long("path", config + name) +
                            "Unable to determine object file from " + magnus + "\n\n" +
                            nothing_else);

  write_file(magnus, "");
  put_unreadable(config + "servlets.properties");
  put_unreadable(config + "rules.properties");
  put_unreadable(instance + "/start");
  const auto failed = [&config](const std::string& file, const std::string& error) {
    return "\n\nContents of " + config + file + ":\n\nFailed to read config file " + config + file +
           ", error " + error + "\n\n";
  };
  EXPECT_EQ(written(0),
            contents + failed("obj.conf", "2") + failed("servlets.properties", "22") +
                failed("rules.properties", "22") + "\n\n" + title("CGI directories") +
                "Listing of CGI directories configured in " + config + "obj.conf\nUnable to open " +
                config + "obj.conf for reading, errno=2\nFailed to log CGI dirs from " + config +
                "obj.conf\n\n\n" + title("Startup Script") + "Contents of " + instance +
                "/start\n\nFailed to open " + instance + "/start for reading, error is 22\n");
}

TEST_F(Netscape, ObjectFile) {
  struct Case {
    std::string magnus;
    std::string object_file;
    bool is_named = true;
  };
  for (const auto& [magnus, object_file, is_named] :
       {Case{"Port 80\nLoadObjects myobj.conf\n", "/ns/config/myobj.conf"},
        {"LoadObjects /etc/ns/obj.conf", "/etc/ns/obj.conf"},
        {"LoadObjects \"a b\r\n", "/ns/config/a b"},
        {std::string(254, 'x') + "LoadObjects piece\n", "/ns/config/piece"},
        {std::string(253, 'x') + "LoadObjects piece\n", "/ns/config/obj.conf", false},
        {"LoadObjects # none\nLoadObjects late\n", "/ns/config/obj.conf", false},
        {" LoadObjects x\nloadobjects x\nLoadObjects\tx\n", "/ns/config/obj.conf", false}}) {
    write_file(path("magnus"), magnus);
    SetVerboseMode(1);
    std::array<char, SIT_PATH_BYTES> output{'?'};
    const std::string text = written_by(
        [&] { EXPECT_EQ(GetNetscapeObjConf(path("magnus").c_str(), "/ns", output.data()), 0); });
    EXPECT_EQ(output.data(), object_file);
    EXPECT_EQ(text,
              kVerboseStart +
                  (is_named ? "VERBOSE: Found LoadObjects\nVERBOSE: obj.conf is " + object_file
                            : "VERBOSE: Assuming obj.conf is config/obj.conf\n"
                              "VERBOSE: Assuming obj.conf is " +
                                  object_file) +
                  "\n");
    SetVerboseMode(0);
    EXPECT_EQ(written_by([&] {
                EXPECT_EQ(GetNetscapeObjConf(path("none").c_str(), "/ns", output.data()), ENOENT);
              }),
              "Error opening " + path("none") + " for reading, errno = 2\n");
    EXPECT_STREQ(output.data(), "");
  }
}

TEST_F(Netscape, CgiDirectories) {
  const std::string none = "\n\nNo CGI directories found in " + path("obj") + "\n\n";
  const auto missing = [](const std::string& directory, const std::string& alias) {
    return "\n\nDirectory listing of " + directory + " (alias " + alias + ")\nPath " + directory +
           " does not exist\n";
  };
  fs::create_directory(path("cgi"));
  const std::pair<std::string, std::string> cases[] = {
      {"", none},
      {"NameTrans dir=/no/a name=cgi\n NameTrans dir=/no/a name=\"cgi\"\n"
       "NameTrans from=/a name=\"cgi\"\nNametrans dir=/no/a name=\"cgi\"\n",
       none},
      {"NameTrans dir=/no/cgi-bin/ from=/a name=\"cgi\"\nNameTrans name=\"cgi\" dir=\"/no/b c\\\"",
       missing("/no/cgi-bin", "/a") + missing("/no/b c", "")},
      {"NameTrans from='/a b name=\"cgi\" dir=/no/x\r\n",
       missing("/no/x", "/a b name=\"cgi\" dir=/no/x")},
      {"NameTrans name=\"cgi\" dir=/no/x\nNameTrans name=\"cgi\" dir=\n",
       missing("/no/x", "") + missing("", "") + none},
      {"NameTrans name=\"cgi\" dir=" + path("cgi") + "/",
       "\n\nDirectory listing of " + path("cgi") + " (alias )\n" + listing(path("cgi"))},
      {"NameTrans name=\"cgi\" dir=/" + std::string(400, 'd') + "\n",
       "ERROR: A value in " + path("obj") +
           " goes beyond the first 254 characters of its line and is not used.\n" + none},
      {"NameTrans name=\"cgi\" dir=/" + std::string(228, 'd') + "\r\n",
       missing("/" + std::string(228, 'd'), "")}};
  for (const auto& [objects, expected] : cases) {
    write_file(path("obj"), objects);
    EXPECT_EQ(written_by([&] { EXPECT_EQ(LogNetscapeCGIDirs(path("obj").c_str()), 0); }), expected)
        << objects;
  }
}

}  // namespace
