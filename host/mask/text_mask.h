// A text of any length as it is masked, piece by piece.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "mask/masker.h"

namespace host {

// Where a mask stands.
struct MaskPlace {
  std::uint64_t line;
  std::string rule;
};

class TextMask {
 public:
  explicit TextMask(Masker& masker) : masker_(masker) {}

  // Takes more of the text and appends what is masked by now to `out`. In the place of a line that
  // is too long to be looked at, a mask says so.
  void take(std::string_view bytes, std::string& out);
  // At the end of the text.
  void finish(std::string& out);

  // Whether what has gone out differs from the text.
  [[nodiscard]] bool has_changed() const { return has_changed_; }
  // The first of the places, and how many there are.
  [[nodiscard]] const std::vector<MaskPlace>& places() const { return places_; }
  [[nodiscard]] std::uint64_t masks() const { return masks_; }

 private:
  enum class Inside { kNothing, kBlock, kMaybeBlock };

  void hold(std::string_view bytes, std::string& out);
  void look_through(std::string_view lines, std::string& out);
  [[nodiscard]] std::size_t next_line_to_look_at(std::string_view lines, std::size_t at) const;
  void take_line(std::string_view line, std::string& out);
  bool takes_as_inside(std::string_view line, std::string& out);
  bool begins_block(std::string_view line, std::string& out);
  void mask_secrets(std::string_view line, std::string& out);
  void mask_line(std::string_view line, std::string_view rule, std::uint64_t number,
                 std::string& out);
  void release(std::string& out, bool as_secret);
  void end_long_line(std::string& out);
  void note(std::string_view rule, std::uint64_t line);

  Masker& masker_;
  std::string held_;  // the beginning of a line
  std::uint64_t line_ = 1;
  std::uint64_t long_bytes_ = 0;  // of a line that is being left out
  Inside inside_ = Inside::kNothing;
  const MaskBlock* block_ = nullptr;
  std::vector<std::string> pending_;  // lines of what may be a block
  bool has_changed_ = false;
  std::vector<MaskPlace> places_;
  std::uint64_t masks_ = 0;
};

}  // namespace host
