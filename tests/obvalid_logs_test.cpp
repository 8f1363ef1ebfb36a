#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <fstream>
#include <map>
#include <thread>

#include "support/sit_test.h"

namespace test {
namespace {

using Tree = std::map<std::string, std::string>;

class Logs : public InstallationTest {
 protected:
  void SetUp() override {
    InstallationTest::SetUp();
    move_to(path("."));  // all logs are its own
  }
  void TearDown() override {
    clear_table();
    InstallationTest::TearDown();
  }
  static void clear_table() {
    for (LogEntry* entry = logs; entry->name != nullptr; *entry++ = {}) {
      for (char* text : {entry->version, entry->name, entry->logFile}) std::free(text);
    }
  }
  void note(const std::string& key, const std::string& name, const std::string& file) {
    const std::string line = key + ": " + path(file) + "\n";
    EXPECT_EQ(Populate_Logs_Table(line.c_str(), "10.1B03", name.c_str()), 0);
  }
  std::string note_databases(const std::string& content) {
    write_file(path("conmgr"), content);
    EXPECT_EQ(Populate_Logs_Table_ConMgr(path("conmgr").c_str(), "10.1B03"), 0);
    std::string noted;
    for (const LogEntry* entry = logs; entry->name != nullptr; ++entry) {
      if (entry->type == LT_DATABASE)
        noted += std::string(entry->name) + "=" + entry->logFile + ";";
    }
    return noted;
  }
  void expect_copies(const std::string& name, int result, const Tree& copies,
                     const std::string& said = "") {
    const std::string to = path("copies");
    fs::create_directory(to);
    EXPECT_EQ(written_by([&] {
                EXPECT_EQ(Copy_Log_Files(name.c_str(), "10.1B03", to.c_str()), result) << name;
              }),
              said);
    Tree found;
    for (const auto& entry : fs::recursive_directory_iterator(to)) {
      const std::string file = entry.path().lexically_relative(to);
      if (!entry.is_directory()) found[file] = read_file(entry.path());
      EXPECT_TRUE(!entry.is_directory() || entry.status().permissions() == fs::perms{0755});
    }
    EXPECT_TRUE(found == copies) << name;  // too large to be printed
    fs::remove_all(to);
  }
};

TEST_F(Logs, CheckToolLinesMoreThanTheTableHolds) {
  expect_rows("obvalid", "log file", [](const Row& row) {
    char output[255] = "before";
    const int result = ReadPropertyValue_From_Validation(row[0], "logFile", output);
    return std::to_string(result) + " " + output;
  });
  expect_rows("obvalid", "databases", [this](const Row& row) {
    clear_table();
    return note_databases(row.text(0));
  });
  EXPECT_EQ(Populate_Logs_Table_ConMgr("/nosuch", "1"), 0);
  clear_table();
  const char* lines[][3] = {
      {"srvrLogFile: /a", "1", "zone"},   {"brokerLogFile : @ (/b)\n", "1", "zone"},
      {"logFile: /c%s", nullptr, "zone"}, {"brokerLogFile: /other", "1", "ZONE"},
      {"brokerLogFile: /d", "2", "zone"}, {"logfile: /no", "1", "two"}};
  EXPECT_EQ(written_by([&] {
              SetVerboseMode(1);
              EXPECT_EQ(List_log_table(), 0);
              for (const auto& [line, version, name] : lines)
                EXPECT_EQ(Populate_Logs_Table(line, version, name), 0);
              EXPECT_EQ(List_log_table(), 0);
              for (int i = 0; i < 300; ++i) note("brokerLogFile", std::to_string(i), "a.log");
              SetVerboseMode(0);
            }),
            "VERBOSE: \n\nVERBOSE: \n\nVERBOSE: \n\n"
            "VERBOSE: Version 1  type 1  name=zone srvrlogFile= /a\n"
            "VERBOSE: Version 1  type 2  name=zone brkrlogfile= /b\n"
            "VERBOSE: Version NULL  type 3  name=zone srvrlogFile= /c%s\n"
            "VERBOSE: Version 2  type 2  name=zone brkrlogfile= /d\n"
            "VERBOSE: \n\n"
            "VERBOSE: The log table is full: further log files are not noted\n");
  EXPECT_EQ(logs[255].name, nullptr);
  write_file(path("a.log"), "last");
  expect_copies("250", 0, {{"a.log", "last"}});
  expect_copies("251", 1, {});
}

TEST_F(Logs, CopiesOfOneName) {
  const std::string banner = "PELINVENTORY:  File trimmed to 1 MB...\n\n";
  const std::string exact = repeat("0123456\n", 131072);
  write_file(path("server.log"), exact);
  write_file(path("broker.log"), "x" + exact);
  write_file(path("a.lg"), "text\n");
  note("srvrLogFile", "sports", "server.log");
  const std::string database = "]\ndatabasename=" + path("a\n");
  note_databases("[database.sports" + database + "[database.first" + database);
  note("brokerLogFile", "Sports", "broker.log");
  note("logFile", "first", "server.log");
  expect_copies("SPORTS", 10030, {{"server.log", exact}, {"broker.log", banner + exact.substr(8)}});
  expect_copies("DB:Sports", 0, {{"sports/a.lg", "text\n"}});
  expect_copies("first", 0, {{"first/a.lg", "text\n"}, {"server.log", exact}});
  expect_copies("db:nosuch", 1, {});
  EXPECT_EQ(Copy_Log_Files("sports", "10.1B", path("copies").c_str()), 1);
  EXPECT_EQ(Copy_Log_Files("nosuch", "10.1B03", ""), 1) << "which means the root";
  EXPECT_EQ(Copy_File(nullptr, "copy", 0), -1);
  EXPECT_EQ(Copy_File(path("broker.log").c_str(), path("all").c_str(), 0), 0);
  EXPECT_TRUE(read_file(path("all")) == "x" + exact);
  // A sparse log of eight gigabytes, of which no more than the end may be read.
  fs::resize_file(path("all"), 8L << 30);
  std::ofstream(path("all"), std::ios::app) << "\nlast line\n";
  note("logFile", "huge", "all");
  const auto bytes_read = [] { return std::stoul(read_file("/proc/self/io").substr(7)); };
  const unsigned long before = bytes_read();
  expect_copies("huge", 0, {{"all", banner + "last line\n"}});
  EXPECT_LT(bytes_read() - before, exact.size() + 32768);
  const std::string refused = "ERROR: Cannot create directory " + path("copies/first") +
                              " for database instance first, errno = 17.\n";
  note_databases("[database.../out" + database);
  expect_copies("db:../out", 1, {},
                "ERROR: Cannot create directory " + path("copies/../out") +
                    " for database instance ../out, errno = 22.\n");
  write_file(path("copies/first/old"), "kept");
  expect_copies("db:first", 1, {{"first/old", "kept"}}, refused);
  write_file(path("copies/first/old"), "kept");
  expect_copies("first", 0, {{"first/old", "kept"}, {"server.log", exact}}, refused);

  move_to(path("pel"));
  fs::create_symlink("../a.lg", dir() + "/link");
  write_file(path("pelican"), "");
  const std::string outside = " lies outside " + dir();
  note("logFile", "outside", "pelican");
  expect_copies("outside", 0, {{"pelican", ""}},
                "INFORMATION: " + path("pelican") + outside + ".\n");
  note("logFile", "linked", "pel/link");
  expect_copies("linked", 0, {{"link", "text\n"}},
                "INFORMATION: " + path("pel/link") + outside + ", at " + path("a.lg") + ".\n");
}

TEST_F(Logs, CopyGoesOnPastLogsThatCannotBeCopied) {
  write_file(path("good.log"), "good\n");
  write_file(path("too_big"), repeat("log\n", 50000));
  fs::create_directory(path("folder"));
  fs::create_symlink("/dev/zero", path("endless"));
  std::signal(SIGXFSZ, SIG_IGN);
  const FileSizeLimit limit(100000);
  for (const auto& [file, result] :
       {std::pair{"%s", 2}, {"folder", 21}, {"endless", 22}, {"too_big", 27}}) {
    clear_table();
    note("srvrLogFile", "one", file);
    note("brokerLogFile", "one", "good.log");
    const std::string failed = path(file) + ", ret = " + std::to_string(result) + "\n";
    expect_copies("one", 0, {{"good.log", "good\n"}},
                  result == 2 ? "Cannot find " + path(file) + ". Skipping file copy.\n"
                              : "ERROR: Cannot copy file " + failed);
  }
}

TEST_F(Logs, AdminServer) {
  record_.major = 10;
  expect_copies("admsrv", 10021, {});
  write_file(dir() + "/properties/AdminServerPlugins.properties", "");
  expect_copies("AdmSrv", 10023, {});
  write_file(dir() + "/bin/peladsv", "W=\"$WRKDIR\" \"" + path("work") + "\"\n");
  write_file(path("work/asv0.exp/folder"), "");
  const std::string failed = "Could not copy " + path("work/asv0.exp") + ", ret = 21\n";
  Tree work;
  std::string missing;
  for (const char* name :
       {"adminsrv.log", "AdminSrvConsole.log", "cmdhandler.log", "faults.log", "general.log"}) {
    missing += "Can't find " + path("work/") + name + "... Skipping file copy\n";
    work[name] = name;
  }
  expect_copies("admsrv", 10024, {}, missing + failed);
  for (const auto& [name, content] : work) write_file(path("work/" + name), content);
  expect_copies("ADMSRV", 0, work, failed);
}

// Whatever is copied of the log makes it grow by twice as much.
TEST_F(Logs, LogThatGrowsFasterThanItIsCopied) {
  const std::string content = repeat("0123456\n", 50000);
  write_file(path("a.log"), content);
  ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
  const int pipe = ::open(path("pipe").c_str(), O_RDWR);
  std::string received;
  std::thread growth([&] {
    std::ofstream log(path("a.log"), std::ios::app);
    for (char block[4096]; !received.ends_with('!');) {
      received.append(block, static_cast<std::size_t>(::read(pipe, block, sizeof block)));
      if (received.size() < 20000000) log << std::string(8192, '+') << std::flush;
    }
  });
  EXPECT_EQ(Copy_File(path("a.log").c_str(), path("pipe").c_str(), 1), 0);
  EXPECT_EQ(::write(pipe, "!", 1), 1);
  growth.join();
  ::close(pipe);
  EXPECT_TRUE(received == content + "!") << received.size();
}

}  // namespace
}  // namespace test
