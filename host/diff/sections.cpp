#include "diff/sections.h"

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <string_view>

#include "page/page.h"
#include "result/collection.h"
#include "support/lines.h"

namespace host {
namespace {

using nlohmann::json;

constexpr std::size_t kMostLines = 50000;      // of a section that are kept
constexpr std::size_t kMostBytes = 128 << 20;  // of all lines that are kept
constexpr std::size_t kShown = 300;            // bytes of a line

// The titles of a file by the lines they stand in.
using Titles = std::map<std::uint64_t, std::string>;

std::map<std::string, Titles> titles_of(const json& manifest) {
  std::map<std::string, Titles> titles;
  for (const json& row : manifest.value("rows", json::array())) {
    Titles& of_file = titles[row.value("file", "")];
    for (const json& section : row.value("sections", json::array())) {
      of_file[section.value("line", std::uint64_t{0})] = section.value("title", "");
    }
  }
  return titles;
}

bool tells_of_others(const std::string& file) {
  return file == kSummaryFile || file == kManifestFile || file == "masked.txt" || file == kPageFile;
}

// Sorts the lines of one file into its sections.
class FileReader {
 public:
  FileReader(std::string file, const Titles& titles, const NoiseRules& rules, Sections& sections,
             std::size_t& bytes)
      : file_(std::move(file)),
        titles_(titles),
        rules_(rules),
        sections_(sections),
        bytes_(bytes),
        lines_([this](std::string_view line, std::uint64_t number) { return take(line, number); }) {
    enter("");
  }

  bool feed(std::string_view bytes) { return lines_.feed(bytes); }
  void finish() { lines_.finish(); }

 private:
  void enter(const std::string& title) {
    noise_ = rules_.of(file_, title);
    section_ = noise_.is_ignored() ? nullptr : &sections_[{file_, title}];
    if (section_ != nullptr) section_->is_unordered = noise_.is_unordered();
  }

  bool take(std::string_view line, std::uint64_t number) {
    const auto title = titles_.find(number);
    if (title != titles_.end()) enter(title->second);
    std::string reduced(line);
    if (section_ == nullptr || !noise_.reduce(reduced)) return true;
    const std::uint64_t key = std::hash<std::string>()(reduced);
    constexpr std::uint64_t kFactor = 0x9e3779b97f4a7c15;
    section_->order = (section_->order ^ key) * kFactor;
    if (section_->lines.size() >= kMostLines || bytes_ >= kMostBytes) {
      ++section_->left;
      return true;
    }
    section_->lines.push_back({key, std::string(line.substr(0, kShown))});
    bytes_ += sizeof(ComparedLine) + section_->lines.back().text.size();
    return true;
  }

  std::string file_;
  const Titles& titles_;
  const NoiseRules& rules_;
  Sections& sections_;
  std::size_t& bytes_;
  Noise noise_;
  ComparedSection* section_ = nullptr;
  Lines lines_;
};

}  // namespace

Sections sections_of(const Bundle& bundle, const json& manifest, const NoiseRules& rules) {
  const std::map<std::string, Titles> titles = titles_of(manifest);
  const Titles none;
  Sections sections;
  std::size_t bytes = 0;
  std::unique_ptr<FileReader> reader;
  bundle.read_all([&](const std::string& file) -> TakeBytes {
    if (reader != nullptr) reader->finish();
    reader.reset();
    if (tells_of_others(file)) return {};
    const auto found = titles.find(file);
    reader = std::make_unique<FileReader>(file, found == titles.end() ? none : found->second, rules,
                                          sections, bytes);
    return [&reader](std::string_view block) { return reader->feed(block); };
  });
  if (reader != nullptr) reader->finish();
  std::erase_if(sections, [](const auto& entry) {
    return entry.second.lines.empty() && entry.second.left == 0;
  });
  return sections;
}

}  // namespace host
