// What the tests of both web servers' reports share.
#pragma once

#include <filesystem>
#include <string>

#include "support/sit_test.h"

namespace test {

// A section title as it stands in a report.
inline std::string title(const std::string& text) {
  return text + "\n" + std::string(text.size(), '=') + "\n\n";
}

// What a report says about a text that does not fit into a path.
inline std::string too_long(const std::string& what, const std::string& text) {
  return "ERROR: The " + what + " of " + std::to_string(text.size()) +
         " characters is longer than 255 and is not used: " + text.substr(0, 200) + "...\n";
}

class WebServer : public SitTest {
 protected:
  void SetUp() override {
    SitTest::SetUp();
    SetVerboseMode(0);
  }

  // The report of a command, without its end mark; empty when there is none.
  [[nodiscard]] std::string report() const {
    const std::string file = path("report");
    if (!std::filesystem::exists(file)) return "";
    const std::string text = without_header(read_file(file));
    const std::string end = "\n==End of Log==\n";
    EXPECT_TRUE(text.ends_with(end)) << text;
    return text.substr(0, text.size() - end.size());
  }
  static std::string listing(const std::string& directory) {
    return run("ls -lL '" + directory + "'").output + "\n";
  }
  // Exists, but opening it for reading is refused.
  static void put_unreadable(const std::string& file) {
    std::filesystem::create_directories(std::filesystem::path(file).parent_path());
    std::filesystem::remove(file);
    std::filesystem::create_symlink("/dev/zero", file);
  }
};

}  // namespace test
