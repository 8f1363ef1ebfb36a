#include "support/sit_test.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>

// What earlier discoveries found stays valid by contract, though nothing points at it any more.
// NOLINTNEXTLINE(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)
extern "C" const char* __lsan_default_suppressions() {
  return "leak:sit::pelver::discover\nleak:sit::pelver::find_\n";
}

namespace test {

std::string read_file(const fs::path& path) {
  std::ifstream stream(path, std::ios::binary);
  EXPECT_TRUE(stream.is_open()) << path;
  std::ostringstream content;
  content << stream.rdbuf();
  return content.str();
}

void write_file(const fs::path& path, const std::string& content) {
  fs::create_directories(path.parent_path());
  std::ofstream stream(path, std::ios::binary);
  stream << content;
  ASSERT_TRUE(stream.good()) << path;
}

std::string repeat(const std::string& text, std::size_t count) {
  std::string result;
  for (std::size_t i = 0; i < count; ++i) result += text;
  return result;
}

std::string title(const std::string& text) {
  return text + "\n" + std::string(text.size(), '=') + "\n\n";
}

std::string too_long(const std::string& what, const std::string& text, int limit) {
  return "ERROR: The " + what + " of " + std::to_string(text.size()) +
         " characters is longer than " + std::to_string(limit) +
         " and is not used: " + text.substr(0, 100) + (text.size() > 200 ? "..." : "") +
         text.substr(text.size() - 100) + (text.ends_with('\n') ? "" : "\n");
}

std::string no_file(const std::string& directory) {
  return "\nERROR: Reading " + directory + " failed before its end, errno = 21\n";
}

std::string taken(char* text) {
  std::string copy = text == nullptr ? "(null)" : text;
  std::free(text);
  return copy;
}

std::string without_header(const std::string& report) {
  static const std::regex header(
      "     P E L L O R A N     P E L I N V E N T O R Y     T O O L\n\n"
      "Version             : 11\\.6\n"
      "User Name           : [^\n]+\n"
      "Machine Name        : [^\n]+\n"
      "Date and Time       : [A-Z][a-z]{2} [A-Z][a-z]{2} [ \\d]\\d \\d\\d:\\d\\d:\\d\\d \\d{4}\n\n"
      "={80}\n\n");
  std::smatch match;
  const std::string head = report.substr(0, 600);
  if (!std::regex_search(head, match, header, std::regex_constants::match_continuous)) {
    ADD_FAILURE() << "no report header: " << head;
    return report;
  }
  return report.substr(static_cast<std::size_t>(match.length()));
}

std::string body_of(const fs::path& report) {
  static const std::string end = "\n==End of Log==\n";
  const std::string text = without_header(read_file(report));
  EXPECT_THAT(text, EndsWith(end));
  return text.substr(0, text.size() - end.size());
}

std::string without_pids(const std::string& report) {
  static const std::regex pid("(pid|ret|process) [1-9]\\d*");
  return std::regex_replace(report, pid, "$1 P");
}

std::vector<int> open_descriptors() {
  std::vector<int> found;
  for (int fd = 0; fd < 256; ++fd) {
    if (::fcntl(fd, F_GETFD) != -1) found.push_back(fd);
  }
  return found;
}

namespace {

// Puts what `make` gives for each match in its place.
template <typename Make>
void replace_all(std::string& text, const char* pattern, Make make) {
  const std::regex wanted(pattern);
  for (std::smatch match; std::regex_search(text, match, wanted);) {
    text = match.prefix().str() + make(match) + match.suffix().str();
  }
}

std::string field_of(std::string text, const std::string& scratch) {
  static constexpr std::pair<const char*, const char*> kEscapes[] = {
      {"\\n", "\n"}, {"\\r", "\r"},     {"\\t", "\t"},
      {"\\s", " "},  {"\\xff", "\xff"}, {"\\x01", "\x01"}};
  text.erase(0, text.find_first_not_of(' ')).erase(text.find_last_not_of(' ') + 1);
  const auto replace = [&text](std::string_view from, std::string_view to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
      text.replace(at, from.size(), to);
    }
  };
  for (const auto& [from, to] : kEscapes) replace(from, to);
  replace("\\0", std::string_view("\0", 1));
  replace("~", scratch);
  replace_all(text, "\\{(\\d+)\\*([^}]+)\\}",
              [](const auto& found) { return repeat(found[2], std::stoul(found[1])); });
  replace_all(text, "\\{=([^}]+)\\}", [](const auto& found) { return title(found[1]); });
  replace_all(text, "\\{!([^:]+):(\\d+):([^}]+)\\}",
              [](const auto& found) { return too_long(found[1], found[3], std::stoi(found[2])); });
  return text;
}

}  // namespace

void SitTest::expect_rows(const std::string& name, const std::string& call,
                          const Make& make) const {
  std::ifstream lines(ROWS "/" + name + ".txt");
  int cases = 0;
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with(call + " |")) continue;
    std::istringstream rows(
        std::regex_replace(line.substr(line.find('|') + 1), std::regex("\\|\\|"), "\n"));
    for (std::string row; std::getline(rows, row); ++cases) {
      std::vector<std::string> fields;
      std::istringstream rest(row + " ");
      for (std::string field; std::getline(rest, field, '|');) {
        fields.push_back(field_of(field, scratch_));
      }
      const std::string given = make(Row(fields));
      EXPECT_TRUE(given == fields.back()) << row << "\n" << given.substr(0, 2000);
    }
  }
  EXPECT_NE(cases, 0) << call;
}

void SitTest::SetUp() {
  std::string name = (fs::temp_directory_path() / "sit-test-XXXXXX").string();
  ASSERT_NE(::mkdtemp(name.data()), nullptr);
  scratch_ = name;
  fs::create_directory(temporary());
  set_environment("TMPDIR", temporary().c_str());
  for (const char* variable : {"PHM", "DELVONINIT", "PELCFG", "WRKDIR", "JREHOME", "JAVA_HOME"}) {
    set_environment(variable, nullptr);
  }
  descriptors_ = open_descriptors();
}

void SitTest::TearDown() {
  EXPECT_TRUE(fs::is_empty(temporary())) << "temporary files left";
  EXPECT_EQ(open_descriptors(), descriptors_) << "descriptors left open";
  EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child was left";
  set_environment("TMPDIR", nullptr);
  for (const char* mounted : {"layer", "out"}) ::umount2(path(mounted).c_str(), MNT_DETACH);
  fs::remove_all(scratch_);
}

void InstallationTest::SetUp() {
  SitTest::SetUp();
  SIT_Initiate();
  pphm = &record_;
  set_version("10.1B03");
  move_to(path("pel"));
  fs::create_directory(dir_);
}

void InstallationTest::TearDown() {
  pphm = nullptr;
  for (char* owned : {record_.pluginsFile, record_.conmgrFile, record_.wrkDir}) std::free(owned);
  SitTest::TearDown();
}

void InstallationTest::move_to(const std::string& dir) {
  dir_ = dir;
  record_.dir = dir_.data();
}

void InstallationTest::set_version(const std::string& version) {
  version_ = version;
  record_.version = version_.data();
}

void make_tool(const fs::path& path, const std::string& script) {
  write_file(path, "#!/bin/sh\n" + script + "\n");
  fs::permissions(path, fs::perms::owner_all);
}

void set_environment(const char* name, const char* value) {
  value == nullptr ? ::unsetenv(name) : ::setenv(name, value, 1);
}

Ran run(const std::string& shell_command) {
  FILE* pipe = ::popen((shell_command + " 2>&1").c_str(), "re");
  if (pipe == nullptr) return {-1, ""};
  std::string output;
  for (int c = std::getc(pipe); c != EOF; c = std::getc(pipe)) output += static_cast<char>(c);
  return {WEXITSTATUS(::pclose(pipe)), output};
}

bool with_private_usr_bin(const std::string& name, const std::string& content,
                          const fs::path& scratch) {
  if (!private_mounts(CLONE_NEWUSER)) return false;
  const std::string layer = scratch / "layer";
  fs::create_directory(layer);
  if (::mount("tmpfs", layer.c_str(), "tmpfs", 0, nullptr) != 0) return false;
  fs::create_directory(layer + "/work");
  write_file(layer + "/upper/" + name, content);
  const std::string options =
      "lowerdir=/usr/bin,upperdir=" + layer + "/upper,workdir=" + layer + "/work";
  return ::mount("overlay", "/usr/bin", "overlay", 0, options.c_str()) == 0;
}

}  // namespace test
