// What the tests of both web servers' reports share.
#pragma once

#include <array>

#include "support/sit_test.h"

namespace test {

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
    return fs::exists(path("report")) ? body_of(path("report")) : "";
  }
  // What is written into a report, with "(listing)" in the place of the listing of root().
  template <typename Write>
  std::string listed(Write write) {
    std::string text = written_by(write);
    const std::string listing = test::listing(root());
    for (std::size_t at = 0; (at = text.find(listing)) != std::string::npos;) {
      text.replace(at, listing.size(), "(listing)");
    }
    return text;
  }
  // Exists, but opening it for reading is refused.
  static void put_unreadable(const std::string& file) {
    write_file(file, "");
    fs::remove(file);
    fs::create_symlink("/dev/zero", file);
  }
  [[nodiscard]] std::string root() const { return path("root"); }
};

}  // namespace test
