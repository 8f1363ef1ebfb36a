// Putting masks in the place of secrets.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "mask/rules.h"

namespace host {

class Masker {
 public:
  explicit Masker(MaskRules rules);
  Masker(const Masker&) = delete;
  Masker& operator=(const Masker&) = delete;
  ~Masker();

  [[nodiscard]] const MaskRules& rules() const { return rules_; }

  // What stands in the place of a secret: the same for the same secret. The key is this object's
  // own and dies with it.
  [[nodiscard]] std::string mask_of(std::string_view secret) const;

  // A text of few lines, with masks; they are counted.
  [[nodiscard]] std::string masked(std::string_view text);

  void count(std::string_view rule, std::uint64_t secrets = 1);
  [[nodiscard]] const std::map<std::string, std::uint64_t, std::less<>>& counts() const {
    return counts_;
  }

 private:
  MaskRules rules_;
  std::array<unsigned char, 32> key_;
  std::map<std::string, std::uint64_t, std::less<>> counts_;
};

}  // namespace host
