#include "support/text.h"

#include <re2/re2.h>

#include <algorithm>
#include <array>
#include <iomanip>
#include <numeric>
#include <sstream>
#include <system_error>
#include <utility>

namespace host {
namespace {

std::string rounded(double number, int digits) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(digits) << number;
  return text.str();
}

bool is_inside_character(char c) { return (static_cast<unsigned char>(c) & 0xc0U) == 0x80; }

// How many characters have to be changed, put in or left out to make one text the other.
std::size_t distance(std::string_view left, std::string_view right) {
  std::vector<std::size_t> row(right.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t i = 0; i < left.size(); ++i) {
    std::size_t diagonal = std::exchange(row[0], i + 1);
    for (std::size_t j = 0; j < right.size(); ++j) {
      const std::size_t changed = diagonal + (left[i] == right[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({changed, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

}  // namespace

std::string printable(std::string_view text) {
  // Neither controls nor what formats, such as marks that turn the direction of text.
  static const RE2 shown("([^\\pC]+)");
  static const RE2 hidden("\\pC");
  std::string result;
  re2::StringPiece rest(text.data(), text.size());
  while (!rest.empty()) {
    re2::StringPiece run;
    if (RE2::Consume(&rest, shown, &run)) {
      result.append(run.data(), run.size());
      continue;
    }
    if (!RE2::Consume(&rest, hidden)) rest.remove_prefix(1);  // not UTF-8
    result += '?';
  }
  return result;
}

std::string without_controls(std::string text) {
  constexpr unsigned char kDelete = 0x7f;
  std::replace_if(
      text.begin(), text.end(), [](unsigned char c) { return c < ' ' || c == kDelete; }, '?');
  return text;
}

std::string fitted(std::string_view text, std::size_t width) {
  constexpr std::string_view kMore = "...";
  constexpr std::size_t kMostBytes = 4;  // of a character
  std::string shown = printable(text.substr(0, kMostBytes * width + kMore.size()));
  std::size_t characters = 0;
  std::size_t cut = 0;  // where a text that turns out too long ends
  for (std::size_t at = 0; at < shown.size(); ++at) {
    const bool is_start = !is_inside_character(shown[at]);
    if (is_start && characters + kMore.size() == width) cut = at;
    if (is_start && ++characters > width) return shown.substr(0, cut) + std::string(kMore);
  }
  return shown;
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
  std::vector<std::string> lines(1);
  std::istringstream words{printable(text)};
  for (std::string word; words >> word;) {
    while (word.size() > width) {  // a long path, say
      if (!lines.back().empty()) lines.emplace_back();
      std::size_t cut = width;
      while (cut > 1 && is_inside_character(word[cut])) --cut;
      lines.back() = word.substr(0, cut);
      word.erase(0, cut);
    }
    const bool fits = lines.back().size() + word.size() < width || lines.back().empty();
    if (!fits) lines.emplace_back();
    if (!lines.back().empty()) lines.back() += ' ';
    lines.back() += word;
  }
  return lines;
}

std::string seconds_text(double seconds) {
  constexpr double kExact = 10;
  return rounded(seconds, seconds < kExact ? 2 : 1);
}

std::string size_text(std::uint64_t bytes) {
  constexpr double kStep = 1024;
  constexpr std::array kUnits{"bytes", "KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
  std::size_t unit = 0;
  auto number = static_cast<double>(bytes);
  for (; number >= kStep && unit + 1 < kUnits.size(); ++unit) number /= kStep;
  return rounded(number, unit == 0 ? 0 : 1) + " " + kUnits.at(unit);
}

std::string counted(std::size_t count, const std::string& one) {
  return std::to_string(count) + " " + one + (count == 1 ? "" : "s");
}

std::string error_text(int error) { return std::generic_category().message(error); }

std::string nearest(const std::string& name, const std::vector<std::string>& known) {
  std::string best;
  std::size_t least = name.size() / 2 + 1;
  for (const std::string& other : known) {
    const std::size_t apart = distance(name, other);
    if (apart < least) {
      least = apart;
      best = other;
    }
  }
  return best;
}

}  // namespace host
