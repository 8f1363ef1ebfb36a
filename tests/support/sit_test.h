// What every test stands on: a scratch folder, and the promise that a call leaves nothing behind.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "sit/sit.h"
#include "support/process.h"

namespace test {

namespace fs = std::filesystem;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string read_file(const fs::path& path);
void write_file(const fs::path& path, const std::string& content);

// The whole text `count` times over.
std::string repeat(const std::string& text, std::size_t count);

// A section title as it stands in a report.
std::string title(const std::string& text);

// What a report says about a text that does not fit where it belongs.
std::string too_long(const std::string& what, const std::string& text, int limit = 255);

// What it says about a directory that is read as a file.
std::string no_file(const std::string& directory);

// A text of the plug-in's that the caller owns; it is freed.
std::string taken(char* text);

// Fails the test when the text does not begin with a report header; returns what follows it.
std::string without_header(const std::string& report);

// What a whole report holds between its header and its end mark; fails the test when it lacks one.
std::string body_of(const fs::path& report);

// The lines of a verbose report without their process ids.
std::string without_pids(const std::string& report);

std::vector<int> open_descriptors();

// A folder of its own for each test, also the temporary folder of the plug-in. At its end no
// temporary file, no descriptor and no unexpected child may be left.
class SitTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  [[nodiscard]] std::string path(const std::string& name) const { return scratch_ / name; }
  [[nodiscard]] std::string temporary() const { return scratch_ / "tmp"; }

  // One case of a file below tests/rows, which tells how a line is read.
  class Row {
   public:
    explicit Row(std::vector<std::string> fields) : fields_(std::move(fields)) {}
    // A field that is a lone "-" stands for null.
    const char* operator[](std::size_t i) const {
      return fields_.at(i) == "-" ? nullptr : fields_.at(i).c_str();
    }
    [[nodiscard]] const std::string& text(std::size_t i) const { return fields_.at(i); }
    [[nodiscard]] int number(std::size_t i) const { return std::stoi(fields_.at(i)); }

   private:
    std::vector<std::string> fields_;
  };
  // Hands each case that tests/rows/NAME.txt has for `call` to `make`; it returns what came of it,
  // which is to be the case's last field.
  using Make = std::function<std::string(const Row&)>;
  void expect_rows(const std::string& name, const std::string& call, const Make& make) const;

  // Opens path("report.txt"), lets `write` write into it and returns what it wrote.
  template <typename Write>
  std::string written_by(Write write) {
    EXPECT_EQ(LogOpen(path("report.txt").c_str(), SIT_CREATE), 0);
    write();
    EXPECT_EQ(LogClose(0), 0);
    std::string text = without_header(read_file(path("report.txt")));
    if (!text.empty()) text.pop_back();  // the newline that closing adds
    return text;
  }

 private:
  fs::path scratch_;
  std::vector<int> descriptors_;
};

// One installation in the list, of version 10.1B03 and in a folder of its own.
class InstallationTest : public SitTest {
 protected:
  void SetUp() override;
  void TearDown() override;

  [[nodiscard]] const std::string& dir() const { return dir_; }
  void move_to(const std::string& dir);
  void set_version(const std::string& version);

  PHMVER record_{};

 private:
  std::string dir_;
  std::string version_;
};

// Makes a shell script that can be run.
void make_tool(const fs::path& path, const std::string& script);

// Sets an environment variable, or removes it when there is no value.
void set_environment(const char* name, const char* value);

// Runs a program and returns what it printed, with its exit status.
struct Ran {
  int status;
  std::string output;
};
Ran run(const std::string& shell_command);

// Gives this process a /usr/bin of its own, in which a file may be put that the machine does not
// get to see. False when the machine does not allow that.
bool with_private_usr_bin(const std::string& name, const std::string& content,
                          const fs::path& scratch);

}  // namespace test
