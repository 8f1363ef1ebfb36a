// The lines of a text that comes in pieces.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace host {

class Lines {
 public:
  // Takes a line without its newline; of a long one no more than its start. False: no more of them.
  using Take = std::function<bool(std::string_view line, std::uint64_t number)>;

  explicit Lines(Take take) : take_(std::move(take)) {}

  // False once no more are wanted.
  bool feed(std::string_view bytes);
  // A last line without a newline is one, too.
  void finish();

  static constexpr std::size_t kLongest = 4096;

 private:
  bool hand_out(std::string_view line);

  Take take_;
  std::string held_;
  bool is_held_ = false;
  bool is_wanted_ = true;
  std::uint64_t number_ = 0;
};

}  // namespace host
