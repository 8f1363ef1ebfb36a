// What the tests of both web servers' reports share.
#pragma once

#include <array>
#include <filesystem>
#include <string>
#include <utility>

#include "support/sit_test.h"

namespace test {

using Texts = std::pair<std::string, std::string>;

// A section title as it stands in a report.
inline std::string title(const std::string& text) {
  return text + "\n" + std::string(text.size(), '=') + "\n\n";
}

// What a report says about a text that does not fit into a path.
inline std::string too_long(const std::string& what, const std::string& text) {
  return "ERROR: The " + what + " of " + std::to_string(text.size()) +
         " characters is longer than 255 and is not used: " + text.substr(0, 200) + "...\n";
}

inline std::string listing(const std::string& directory) {
  return run("ls -lL '" + directory + "'").output + "\n";
}

// What a call writes into a path buffer.
template <typename Call>
std::string stored_by(Call call) {
  std::array<char, SIT_PATH_BYTES> output{'?'};
  call(output.data());
  return output.data();
}

class WebServer : public SitTest {
 protected:
  void SetUp() override {
    SitTest::SetUp();
    SetVerboseMode(0);
  }
  // The report of a command, without its end mark; empty when there is none.
  [[nodiscard]] std::string report() const {
    if (!std::filesystem::exists(path("report"))) return "";
    const std::string text = without_header(read_file(path("report")));
    EXPECT_TRUE(text.ends_with("\n==End of Log==\n")) << text;
    return text.substr(0, text.size() - 16);
  }
  // Exists, but opening it for reading is refused.
  static void put_unreadable(const std::string& file) {
    write_file(file, "");
    std::filesystem::remove(file);
    std::filesystem::create_symlink("/dev/zero", file);
  }
  [[nodiscard]] std::string root() const { return path("root"); }
};

}  // namespace test
