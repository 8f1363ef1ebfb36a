#include "mask/text_mask.h"

#include <algorithm>

namespace host {
namespace {

using re2::StringPiece;

constexpr std::size_t kLongestLine = std::size_t{1} << 20U;
constexpr std::size_t kLongestBlock = 400;  // lines
constexpr std::size_t kMostPlaces = 10'000;
constexpr std::string_view kTooLong = "line too long";

bool finds(const Pattern& pattern, std::string_view line) {
  return RE2::PartialMatch(StringPiece(line.data(), line.size()), *pattern);
}

std::uint64_t lines_in(std::string_view text) {
  return static_cast<std::uint64_t>(std::count(text.begin(), text.end(), '\n'));
}

// With its newline, if it has one.
std::string_view first_line(std::string_view text) {
  const std::size_t newline = text.find('\n');
  return newline == std::string_view::npos ? text : text.substr(0, newline + 1);
}

std::string_view without_end(std::string_view line) {
  while (line.ends_with('\n') || line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

}  // namespace

void TextMask::take(std::string_view bytes, std::string& out) {
  if (!held_.empty() || long_bytes_ > 0) {
    const std::string_view rest = first_line(bytes);
    bytes.remove_prefix(rest.size());
    hold(rest, out);
    if (!rest.ends_with('\n')) return;
    if (long_bytes_ > 0) {
      end_long_line(out);
    } else {
      look_through(held_, out);
      held_.clear();
    }
  }
  const std::size_t last = bytes.rfind('\n');
  const std::size_t whole = last == std::string::npos ? 0 : last + 1;
  look_through(bytes.substr(0, whole), out);
  hold(bytes.substr(whole), out);
}

void TextMask::finish(std::string& out) {
  if (long_bytes_ > 0) end_long_line(out);
  look_through(held_, out);
  held_.clear();
  release(out, false);
}

// Keeps the beginning of a line, as long as it is not too long.
void TextMask::hold(std::string_view bytes, std::string& out) {
  if (long_bytes_ == 0) held_ += bytes;
  if (long_bytes_ == 0 && held_.size() <= kLongestLine) return;
  release(out, false);
  long_bytes_ += long_bytes_ == 0 ? held_.size() : bytes.size();
  held_.clear();
}

void TextMask::end_long_line(std::string& out) {
  out += std::string(kMaskStart) + "a line of " + std::to_string(long_bytes_) +
         " bytes, too long to be looked at]\n";
  note(kTooLong, line_++);
  long_bytes_ = 0;
}

void TextMask::look_through(std::string_view lines, std::string& out) {
  for (std::size_t at = 0; at < lines.size();) {
    const std::size_t begin = next_line_to_look_at(lines, at);
    out += lines.substr(at, begin - at);
    line_ += lines_in(lines.substr(at, begin - at));
    if (begin == lines.size()) return;
    const std::string_view line = first_line(lines.substr(begin));
    take_line(line, out);
    if (line.ends_with('\n')) ++line_;
    at = begin + line.size();
  }
}

// Where it begins; the end of the text when there is none.
std::size_t TextMask::next_line_to_look_at(std::string_view lines, std::size_t at) const {
  if (inside_ != Inside::kNothing) return at;
  const StringPiece text(lines.data(), lines.size());
  StringPiece match;
  if (!masker_.rules().any->Match(text, at, lines.size(), RE2::UNANCHORED, &match, 1)) {
    return lines.size();
  }
  const auto place = static_cast<std::size_t>(match.data() - text.data());
  const std::size_t newline = place == 0 ? std::string_view::npos : lines.rfind('\n', place - 1);
  return newline == std::string_view::npos ? 0 : newline + 1;
}

void TextMask::take_line(std::string_view line, std::string& out) {
  if (!takes_as_inside(line, out) && !begins_block(line, out)) mask_secrets(line, out);
}

bool TextMask::takes_as_inside(std::string_view line, std::string& out) {
  if (inside_ == Inside::kNothing) return false;
  const std::string_view text = without_end(line);
  const bool is_end = finds(block_->end, text);
  if (!is_end && finds(block_->inside, text) && pending_.size() < kLongestBlock) {
    if (inside_ == Inside::kBlock) mask_line(line, block_->name, line_, out);
    if (inside_ == Inside::kMaybeBlock) pending_.emplace_back(line);
    return true;
  }
  release(out, is_end);
  return false;
}

bool TextMask::begins_block(std::string_view line, std::string& out) {
  const std::string_view text = without_end(line);
  for (const MaskBlock& block : masker_.rules().blocks) {
    const bool is_begin = finds(block.begin, text);
    if (!is_begin && !finds(block.alone, text)) continue;
    block_ = &block;
    inside_ = is_begin ? Inside::kBlock : Inside::kMaybeBlock;
    if (!is_begin) pending_.emplace_back(line);
    if (is_begin) mask_secrets(line, out);
    return true;
  }
  return false;
}

// What may have been a block goes out, as one or as the text that it is.
void TextMask::release(std::string& out, bool as_secret) {
  std::uint64_t number = line_ - pending_.size();
  for (const std::string& line : pending_) {
    if (as_secret) {
      mask_line(line, block_->name, number++, out);
    } else {
      out += line;
    }
  }
  pending_.clear();
  inside_ = Inside::kNothing;
}

void TextMask::mask_line(std::string_view line, std::string_view rule, std::uint64_t number,
                         std::string& out) {
  const std::string_view text = without_end(line);
  if (text.empty() || text.starts_with(kMaskStart)) {
    out += line;
    return;
  }
  out += masker_.mask_of(text);
  out += line.substr(text.size());
  note(rule, number);
}

void TextMask::mask_secrets(std::string_view line, std::string& out) {
  std::size_t done = 0;
  for (const Secret& secret : secrets_in(without_end(line), masker_.rules())) {
    out += line.substr(done, secret.begin - done);
    out += masker_.mask_of(line.substr(secret.begin, secret.end - secret.begin));
    done = secret.end;
    note(secret.rule, line_);
  }
  out += line.substr(done);
}

void TextMask::note(std::string_view rule, std::uint64_t line) {
  has_changed_ = true;
  ++masks_;
  masker_.count(rule);
  if (places_.size() < kMostPlaces) places_.push_back({line, std::string(rule)});
}

}  // namespace host
