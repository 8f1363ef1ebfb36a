// The lines of a text that comes in pieces.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
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
  // Feeds all that is in a file, or the first bytes of it, and finishes. False: not all was wanted.
  bool read(int fd, std::uint64_t most = std::numeric_limits<std::uint64_t>::max());

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
