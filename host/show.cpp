#include "show.h"

#include <algorithm>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <vector>

#include "bundle/bundle.h"
#include "collect.h"
#include "result/collection.h"
#include "support/failure.h"
#include "support/printing.h"
#include "support/text.h"

namespace host {
namespace {

using nlohmann::json;

// Lines of a file, the last one not included; 0: to its end.
struct Part {
  std::string file;
  std::uint64_t first = 1;
  std::uint64_t last = 0;
  std::string name = {};
};

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

// The sections of a row, each up to where the next one begins.
std::vector<Part> sections_of(const json& row) {
  std::vector<Part> parts;
  for (const json& section : row.value("sections", json::array())) {
    const std::uint64_t line = section.value("line", std::uint64_t{0});
    if (line == 0) continue;
    if (!parts.empty()) parts.back().last = line;
    parts.push_back(
        {row.value("file", ""), line, 0, row.value("id", "") + ": " + section.value("title", "")});
  }
  return parts;
}

std::string title_of(const Part& part) { return part.name.substr(part.name.find(": ") + 2); }

// What is meant by this name: the one section whose title it is, or is in.
Part find_section(const json& manifest, const std::string& what) {
  std::vector<Part> same;
  std::vector<Part> alike;
  for (const json& row : manifest.value("rows", json::array())) {
    for (const Part& part : sections_of(row)) {
      const std::string title = lower(title_of(part));
      if (title == lower(what)) same.push_back(part);
      if (title.find(lower(what)) != std::string::npos) alike.push_back(part);
    }
  }
  const std::vector<Part>& found = same.empty() ? alike : same;
  if (found.size() == 1) return found.front();
  std::string names;
  for (const Part& part : found) names += (names.empty() ? "" : ", ") + part.name;
  throw UsageError("\"" + what + "\" is " +
                   (found.empty() ? "no row, file or section of it" : "one of " + names));
}

Part find(const json& manifest, const std::string& what) {
  if (what.empty()) return {kSummaryFile};
  for (const json& row : manifest.value("rows", json::array())) {
    const std::string file = row.value("file", "");
    if (!file.empty() && (row.value("id", "") == what || file == what)) return {file};
  }
  const auto is_file = [&what](const char* name) { return what == name; };
  for (const char* name : {kSummaryFile, kManifestFile, "masked.txt"}) {
    if (is_file(name)) return {name};
  }
  return find_section(manifest, what);
}

// Prints the lines of the part as they come by.
class PartPrinter {
 public:
  PartPrinter(const Part& part, Printing& printing) : part_(part), printing_(printing) {}

  bool take(std::string_view bytes) {
    std::string wanted;
    while (!bytes.empty() && (part_.last == 0 || line_ < part_.last)) {
      const std::size_t newline = bytes.find('\n');
      const std::string_view piece =
          bytes.substr(0, newline == std::string_view::npos ? newline : newline + 1);
      if (line_ >= part_.first) wanted += piece;
      if (piece.ends_with('\n')) ++line_;
      bytes.remove_prefix(piece.size());
    }
    is_taken_ = is_taken_ && printing_.print(wanted);
    return is_taken_ && (part_.last == 0 || line_ < part_.last);
  }

  [[nodiscard]] bool is_taken() const { return is_taken_; }

 private:
  const Part& part_;
  Printing& printing_;
  std::uint64_t line_ = 1;
  bool is_taken_ = true;
};

}  // namespace

int show(const ShowOptions& options) {
  const Bundle bundle(options.bundle);
  const json manifest = json::parse(bundle.text_of(kManifestFile), nullptr, /*exceptions=*/false);
  if (!manifest.is_object())
    throw Failure(options.bundle.string() + ": its manifest cannot be read");
  const Part part = find(manifest, options.what);
  Printing printing;
  PartPrinter printer(part, printing);
  bundle.read(part.file, [&printer](std::string_view bytes) { return printer.take(bytes); });
  return printer.is_taken() ? kComplete : kPartial;
}

}  // namespace host
