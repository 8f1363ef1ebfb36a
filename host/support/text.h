// Texts as people get to see them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace host {

// The text with a "?" for each control character and each byte that is not UTF-8: nothing found on
// the machine may steer a terminal.
[[nodiscard]] std::string printable(std::string_view text);

// With a "?" for each control character alone: a path that is still one.
[[nodiscard]] std::string without_controls(std::string text);

// As printable(), and no longer than `width` characters; a longer one ends in "...".
[[nodiscard]] std::string fitted(std::string_view text, std::size_t width);

// The words of the text in lines of at most `width` characters.
[[nodiscard]] std::vector<std::string> wrapped(std::string_view text, std::size_t width);

// "0.12" below ten seconds, "12.3" above.
[[nodiscard]] std::string seconds_text(double seconds);

// "3.2 GiB".
[[nodiscard]] std::string size_text(std::uint64_t bytes);

// "3 rows", "1 row".
[[nodiscard]] std::string counted(std::size_t count, const std::string& one);

// What the system says of an error number.
[[nodiscard]] std::string error_text(int error);

// The name of those known that is most like this one; empty when none is near.
[[nodiscard]] std::string nearest(const std::string& name, const std::vector<std::string>& known);

}  // namespace host
