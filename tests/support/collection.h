// Runs "sit collect" and reads what it has made.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "support/sit_test.h"

namespace test {

struct Collected {
  int status = -1;
  std::string printed;  // on standard output
  std::string said;     // on standard error
  double seconds = 0;
  std::filesystem::path folder = {};
  std::string summary = {};
  nlohmann::json manifest = {};

  // The row of this id; null when there is none.
  [[nodiscard]] nlohmann::json row(const std::string& id) const;
  [[nodiscard]] std::string outcome(const std::string& id) const;
  [[nodiscard]] std::string why(const std::string& id) const;
};

// Mounts a small file system for this process alone. False where the machine does not allow that.
[[nodiscard]] bool mount_small(const std::string& where, const std::string& size);

class CollectTest : public SitTest {
 protected:
  // Runs it below path("out") with these options, in a shell that has run `before`; without the
  // usual captures of machines unless the options say something of extras.
  [[nodiscard]] Collected collect(const std::string& options, const std::string& before = "") const;

  // Lays the sample installation out and returns the options that collect all of it.
  [[nodiscard]] std::string sample_options(const std::string& kind = "") const;
  [[nodiscard]] std::string sample() const { return path("sample"); }
};

}  // namespace test
