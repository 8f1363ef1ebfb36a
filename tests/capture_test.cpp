#include <unistd.h>

#include <array>

#include "support/sit_test.h"

namespace test {
namespace {

std::string content(const std::string& report) { return without_header(read_file(report)); }

class Capturing : public SitTest {
 protected:
  void SetUp() override {
    SitTest::SetUp();
    fs::create_directory(path("cap"));
    fs::create_directories(path("host/start"));
    fs::current_path(path("host/start"));
  }
  void TearDown() override {
    fs::current_path("/");
    SitTest::TearDown();
  }
  int run(const char* command, const char* output, const char* index) {
    return RunCommand(command, "", 0, path("").c_str(), "cap", output, index);
  }
  // The entry in the index about a run, with the listing of the folder as it is now.
  [[nodiscard]] std::string entry(const std::string& announcement,
                                  const std::string& outcome) const {
    const std::string listing = test::run("cd " + path("") + " && ls -lLR cap").output;
    return "\n" + announcement + "\n" + outcome + "Files captured:\n" + listing + "\n\n\n\n";
  }
};

TEST_F(Capturing, CommandWithOutputAndIndex) {
  const std::string index = path("index.txt");
  EXPECT_EQ(run("pwd; echo made > file; exit 3", "out.txt", index.c_str()), 0);
  EXPECT_EQ(fs::current_path(), path("host/start"));
  EXPECT_EQ(content(path("cap/out.txt")), path("cap") + "\n\n==End of Log==\n");
  EXPECT_EQ(read_file(path("cap/file")), "made\n");
  const std::string first =
      entry("Command: pwd; echo made > file; exit 3\nOutput File: cap/out.txt\n", "");
  EXPECT_EQ(content(index), first);
  EXPECT_EQ(run("echo unseen", "", index.c_str()), 0);
  EXPECT_EQ(content(index), first + entry("Command: echo unseen\nOutput File: cap/\n", ""));
}

TEST_F(Capturing, RelativeIndexMeansOneFile) {
  const std::string deep =
      path("host/start/") + std::string(100, 'd') + "/" + std::string(100, 'd');
  for (const bool is_deep : {false, true}) {
    if (is_deep) {  // than a path can name
      fs::create_directories(deep + "/" + std::string(100, 'd'));
      fs::current_path(deep + "/" + std::string(100, 'd'));
    }
    EXPECT_EQ(run("true", "out.txt", "index.txt"), 0);
    EXPECT_EQ(content("index.txt"), entry("Command: true\nOutput File: cap/out.txt\n", ""));
    EXPECT_FALSE(fs::exists(path("cap/index.txt")));
  }
}

TEST_F(Capturing, LibraryEntryPoint) {
  const std::string index = path("index.txt");
  fs::copy_file(CAPTURED_LIBRARY, path("cap/lib.so"));
  write_file(path("cap/short.so"), read_file(CAPTURED_LIBRARY).substr(0, 5000));
  using Call = std::array<std::string, 3>;
  const std::string done = "DLL completed.\n";
  for (const auto& [library, entry_point, outcome] :
       {Call{CAPTURED_LIBRARY, "leave_a_file", done},
        {"lib.so", "leave_a_file", done},
        {"./lib.so", "leave_a_file_and_go", done},
        {"./lib.so", "nosuch", "DLL failed: ./lib.so: undefined symbol: nosuch\n"},
        {"/nosuch.so", "x",
         "DLL failed: /nosuch.so: cannot open shared object file: No such file or directory\n"},
        {path("cap/short.so"), "x",
         "DLL failed: " + path("cap/short.so") + ": file is cut short\n"},
        {"", "leave_a_file", "DLL failed: : no library named\n"},
        {path("cap"), "x",
         "DLL failed: " + path("cap") + ": cannot read file data: Is a directory\n"},
        {"/dev/null", "x", "DLL failed: /dev/null: not a regular file\n"}}) {
    fs::remove(index);
    fs::remove(path("cap/left"));
    EXPECT_EQ(RunCommand(library.c_str(), entry_point.c_str(), 1, path("").c_str(), "cap", "",
                         index.c_str()),
              0);
    EXPECT_EQ(content(index),
              entry("DLL Entry Point: " + entry_point + "() in " + library + "\n", outcome));
    EXPECT_EQ(fs::exists(path("cap/left")), outcome == done) << library;
    EXPECT_EQ(fs::current_path(), path("host/start"));
  }
  char not_allocated = '?';
  char* error = &not_allocated;
  EXPECT_EQ(ExecDLLFunction(path("cap/lib.so").c_str(), "leave_a_file", &error), 0);
  EXPECT_EQ(error, nullptr) << "for the caller to free";
}

TEST_F(Capturing, WhatCannotBeOpened) {
  EXPECT_EQ(run("touch ran", "out.txt", path("no/index").c_str()), ENOENT);
  EXPECT_EQ(run("touch ran", "no/out.txt", path("index").c_str()), ENOENT);
  EXPECT_FALSE(fs::exists(path("cap/ran")));
  EXPECT_EQ(content(path("index")), entry("Command: touch ran\nOutput File: cap/no/out.txt\n", ""));
  EXPECT_EQ(RunCommand("echo x", "", 0, path("").c_str(), "missing", "out.txt", nullptr), 0);
  EXPECT_EQ(content(path("host/start/out.txt")), "x\n\n==End of Log==\n");
}

TEST_F(Capturing, TextsBeyondTheirCapacity) {
  const std::string index = path("index");
  const std::string command = "touch ran #" + std::string(499, 'x');
  EXPECT_EQ(run(command.c_str(), "o", index.c_str()), ENAMETOOLONG);
  EXPECT_EQ(content(index), "\nCommand: " + command + "\nOutput File: cap/o\n" +
                                too_long("command", command, 509) + "\n");
  EXPECT_EQ(
      RunCommand("touch ran", "", 0, path("").c_str(), std::string(250, 'n').c_str(), "", nullptr),
      ENAMETOOLONG);
  EXPECT_FALSE(fs::exists(path("cap/ran")));
  EXPECT_EQ(run(command.substr(0, 509).c_str(), "o", nullptr), 0);
  EXPECT_TRUE(fs::exists(path("cap/ran")));
}

TEST_F(Capturing, WorkingDirectoryRemovedMeanwhile) {
  const std::string remove = "rmdir " + path("host/start");
  EXPECT_EQ(run(remove.c_str(), "o", nullptr), 0);
  EXPECT_FALSE(fs::exists(path("host/start")));
  char buffer[256];
  EXPECT_EQ(::getcwd(buffer, sizeof buffer), nullptr) << "still there, and gone";
  EXPECT_EQ(run("true", "o", "index.txt"), ENOENT);
}

}  // namespace
}  // namespace test
