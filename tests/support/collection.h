// Runs "sit collect" and reads what it has made.
#pragma once

#include <nlohmann/json.hpp>

#include "support/sit_test.h"

namespace test {

using nlohmann::json;

struct Collected {
  int status = -1;
  std::string printed;  // on standard output
  std::string said;     // on standard error
  double seconds = 0;
  fs::path folder = {};
  std::string summary = {};
  json manifest = {};

  // Where the archive or the folder is.
  [[nodiscard]] std::string archive() const { return printed.substr(0, printed.find('\n')); }
  // The row of this id; null when there is none.
  [[nodiscard]] json row(const std::string& id) const;
  [[nodiscard]] std::string outcome(const std::string& id) const;
  [[nodiscard]] std::string why(const std::string& id) const;
};

class CollectTest : public SitTest {
 protected:
  // Runs it into path("out"), which it empties before, with these options, in a shell that has run
  // `before`; without the usual captures of machines unless the options say something of extras.
  [[nodiscard]] Collected collect(const std::string& options, const std::string& before = "") const;

  // Lays the sample installation out and returns the options that collect all of it.
  [[nodiscard]] std::string sample_options(const std::string& kind = "") const;
  [[nodiscard]] std::string sample() const { return path("sample"); }
};

}  // namespace test
