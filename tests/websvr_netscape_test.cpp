#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>

#include "support/websvr_test.h"

namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using test::listing, test::stored_by, test::Texts, test::title, test::too_long, test::write_file;

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

TEST_F(Netscape, WhichInstanceIsFound) {
  struct Case {
    std::vector<std::pair<const char*, const char*>> entries;  // no id: without magnus.conf
    const char* name;
    int code;
    std::string found;
  };
  for (auto [entries, name, code, found] :
       {Case{{}, "", 10025, ""},
        {{{"https-admserv", "web"}, {"http-a", "web"}, {"xhttps-a", "web"}}, "web", 10025, ""},
        {{{"https-", ""}, {"https-admserv", ""}}, "", 0, "/https-"},
        {{{"https-admserv2", "web"}}, "web", 0, "/https-admserv2"},
        {{{"https-a", ""}, {"https-b", ""}}, "", 10027, ""},
        {{{"https-a", "web"}, {"https-b", "web"}, {"https-c", nullptr}}, "web", 10027, ""},
        {{{"https-a", "web"}, {"https-b", "web2"}}, "web2", 0, "/https-b"},
        {{{"https-a", "x"}, {"https-b", nullptr}}, "web", 10029, ""},
        {{{"https-a", "x"}, {"https-b", "y"}}, "web", 10028, ""},
        {{{"https-a", "web"}, {"https-b", nullptr}}, "web", 0, "/https-a"}}) {
    fs::remove_all(root());
    fs::create_directory(root());
    for (const auto& [entry, id] : entries) {
      fs::create_directories(root() + "/" + entry);
      if (id != nullptr) write_file(conf(entry), std::string(nsSrvId) + id);
    }
    if (!found.empty()) found.insert(0, root());
    if (code == SIT_SERVERS_AMBIGUOUS) {
      for (const fs::directory_entry& entry : fs::directory_iterator(root()))
        if (found.empty() && fs::exists(entry.path() / "config")) found = entry.path();
    }
    const auto search = [&, name = name, code = code](char* output) {
      EXPECT_EQ(GetNetscapeServerDir(root().c_str(), name, output), code);
    };
    EXPECT_EQ(stored_by(search), found);
  }
}

TEST_F(Netscape, WhichServerIdIsMeant) {
  const std::string web = "ServerID https-web";
  const auto expect = [&](int answer, const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
      write_file(conf("https-a"), text);
      unsigned flags = 0;
      EXPECT_EQ(CheckNetscapeServerName(root().c_str(), "https-a", "web", &flags), answer) << text;
      EXPECT_EQ(flags, 0U);
    }
  };
  const auto behind = [&web](std::size_t length) { return std::string(length, 'x') + web; };
  expect(1, {"Port 80\n" + web + "\nUser x\n", web + "\r\n", "# " + web, web + "\nServerID https-x",
             web + "\0z\n"s, "a\0b\n"s + web, behind(236) + "2", behind(254), behind(4826)});
  expect(0, {"", web + "2", web + " ", "ServerID https-we", "ServerID https-WEB", "ServerID web",
             "ServerID https-x\n" + web, "a\0"s + web, behind(237), behind(253)});
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
  const std::string instance = root() + "/https-a";
  const std::string file = conf("https-a");
  const std::string begun = using_path(root()) + checking("web", instance);
  const std::string found = "VERBOSE: File " + file + " has been found\n";
  const std::string id_found = found + "VERBOSE: Found 'ServerID' in conf file, line is:\n  " +
                               " ServerID https-x%d\r\n\nVERBOSE: Comparing 'x%d' to '";
  fs::create_directories(instance);
  expect_failure(
      root() + "/", 10029,
      begun + "VERBOSE: Config file '" + file + "' does not exist\n\n" + not_found(root()));
  put_unreadable(file);
  expect_failure(root(), 10028,
                 begun + found + "VERBOSE: Failed to open config file " + file + ", errno=22\n\n" +
                     not_found(root()));
  fs::remove(file);
  write_file(file, "Port 80\n ServerID https-x%d\r\nServerID https-web\n");
  expect_failure(root(), 10028, begun + id_found + "web'\n" + not_found(root()));
  SetVerboseMode(1);
  for (const auto& [name, trail] :
       {Texts{"x%d", id_found + "x%d'\nVERBOSE: Found server x%d, as required\n"},
        {"", found + "VERBOSE: srvname is empty (no -wnsrv param?), assuming this to be correct "
                     "server\n\n"}}) {
    const auto check = [this, wanted = name.c_str()] {
      EXPECT_EQ(CheckNetscapeServerName(root().c_str(), "https-a", wanted, nullptr), 1);
    };
    EXPECT_EQ(written_by(check), kVerbose + checking(name, instance) + trail);
  }
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

TEST_F(Netscape, ObjectFile) {
  SetVerboseMode(1);
  const auto expect = [this](const char* file, int code, const std::string& name,
                             const std::string& text) {
    std::string stored;
    const auto call = [&](char* output) {
      EXPECT_EQ(GetNetscapeObjConf(path(file).c_str(), "/ns", output), code);
    };
    EXPECT_EQ(written_by([&] { stored = stored_by(call); }), kVerbose + text);
    EXPECT_EQ(stored, name);
  };
  expect("none", ENOENT, "", "Error opening " + path("none") + " for reading, errno = 2\n");
  const std::string named = "VERBOSE: Found LoadObjects\nVERBOSE: obj.conf is ";
  const std::string assumed =
      "VERBOSE: Assuming obj.conf is config/obj.conf\nVERBOSE: Assuming obj.conf is ";
  for (const auto& [text, file] :
       {Texts{"Port 80\nLoadObjects myobj.conf\n", "/ns/config/myobj.conf"},
        {"LoadObjects /etc/ns/obj.conf", "/etc/ns/obj.conf"},
        {"LoadObjects \"a b\r\n", "/ns/config/a b"},
        {std::string(254, 'x') + "LoadObjects piece\n", "/ns/config/piece"},
        {"LoadObjects " + std::string(300, 'o'), "/ns/config/" + std::string(242, 'o')},
        {std::string(253, 'x') + "LoadObjects piece\n", "/ns/config/obj.conf"},
        {"LoadObjects # none\nLoadObjects late\n", "/ns/config/obj.conf"},
        {" LoadObjects x\nloadobjects x\nLoadObjects\tx\n", "/ns/config/obj.conf"}}) {
    write_file(path("magnus"), text);
    expect("magnus", 0, file, (file == "/ns/config/obj.conf" ? assumed : named) + file + "\n");
  }
}

TEST_F(Netscape, CgiDirectories) {
  const std::string none = "\n\nNo CGI directories found in " + path("obj") + "\n\n";
  const auto heading = [](const std::string& directory, const std::string& alias) {
    return "\n\nDirectory listing of " + directory + " (alias " + alias + ")\n";
  };
  const auto missing = [&](const std::string& directory, const std::string& alias) {
    return heading(directory, alias) + "Path " + directory + " does not exist\n";
  };
  const std::string cgi = path("cgi");
  fs::create_directory(cgi);
  const std::string mapping = "NameTrans name=\"cgi\" dir=";
  const std::string longest = "/" + std::string(228, 'd');
  for (const auto& [objects, expected] :
       {Texts{"", none},
        {"NameTrans dir=/no/a name=cgi\n NameTrans dir=/no/a name=\"cgi\"\n"
         "NameTrans from=/a name=\"cgi\"\nNametrans dir=/no/a name=\"cgi\"\n",
         none},
        {"NameTrans dir=/no/cgi-bin/ from=/a name=\"cgi\"\n" + mapping + "\"/no/b c\\\"",
         missing("/no/cgi-bin", "/a") + missing("/no/b c", "")},
        {"NameTrans from='/a b name=\"cgi\" dir=/no/x\r\n",
         missing("/no/x", "/a b name=\"cgi\" dir=/no/x")},
        {mapping + "/no/x\n" + mapping + "\n", missing("/no/x", "") + missing("", "") + none},
        {mapping + cgi + "/", heading(cgi, "") + listing(cgi)},
        {mapping + longest + "d\r\n", missing(longest, "")}}) {
    write_file(path("obj"), objects);
    EXPECT_EQ(written_by([&] { EXPECT_EQ(LogNetscapeCGIDirs(path("obj").c_str()), 0); }), expected)
        << objects;
  }
}

}  // namespace
