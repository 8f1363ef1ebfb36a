#include "diff/diff.h"

#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "bundle/bundle.h"
#include "diff/noise.h"
#include "diff/sections.h"
#include "result/collection.h"
#include "support/failure.h"
#include "support/printing.h"
#include "support/text.h"

namespace host {
namespace {

using nlohmann::json;

constexpr std::size_t kMostShown = 20;  // lines of a section, of each kind
constexpr int kSame = 0;
constexpr int kDifferent = 1;

json manifest_of(const Bundle& bundle) {
  json manifest = json::parse(bundle.text_of(kManifestFile), nullptr, /*exceptions=*/false);
  if (!manifest.is_object()) {
    throw Failure(bundle.path().string() + ": its manifest cannot be read");
  }
  return manifest;
}

// Texts of one collection by what is compared of them.
using Texts = std::multimap<std::string, std::string>;

Texts findings_of(const json& manifest, const NoiseRules& rules) {
  const Noise noise = rules.of(kSummaryFile, "MISSING OR WRONG");
  Texts findings;
  for (const json& problem : manifest.value("problems", json::array())) {
    const std::string file = problem.value("file", "");
    const std::string text = problem.value("text", "") + (file.empty() ? "" : "  (" + file + ")");
    std::string reduced = text;
    if (noise.reduce(reduced)) findings.emplace(reduced, text);
  }
  return findings;
}

std::map<std::string, std::string> outcomes_of(const json& manifest) {
  std::map<std::string, std::string> outcomes;
  for (const json& row : manifest.value("rows", json::array())) {
    outcomes[row.value("id", "")] = row.value("outcome", "");
  }
  return outcomes;
}

class Difference {
 public:
  void compare_findings(const Texts& before, const Texts& after) {
    std::string told;
    for (const auto& [key, text] : after) {
      if (before.contains(key)) continue;
      told += line_of('+', text);
      ++came_;
    }
    for (const auto& [key, text] : before) {
      if (after.contains(key)) continue;
      told += line_of('-', text);
      ++went_;
    }
    if (!told.empty()) text_ += "\nFINDINGS\n" + told;
  }

  void compare_rows(const std::map<std::string, std::string>& before,
                    const std::map<std::string, std::string>& after) {
    std::string told;
    const auto tell = [&](char sign, const std::string& id, const std::string& outcome) {
      told += line_of(sign, std::string(id).append(": ").append(outcome));
      ++rows_;
    };
    for (const auto& [id, outcome] : after) {
      const auto old = before.find(id);
      if (old == before.end()) {
        tell('+', id, outcome);
      } else if (old->second != outcome) {
        tell(' ', id, std::string(old->second).append(" -> ").append(outcome));
      }
    }
    for (const auto& [id, outcome] : before) {
      if (!after.contains(id)) tell('-', id, outcome);
    }
    if (!told.empty()) text_.append("\nROWS\n").append(told);
  }

  void compare_sections(const Sections& before, const Sections& after) {
    std::set<Sections::key_type> names;
    for (const Sections* sections : {&before, &after}) {
      for (const auto& [name, section] : *sections) names.insert(name);
    }
    const ComparedSection none;
    for (const Sections::key_type& name : names) {
      const auto left = before.find(name);
      const auto right = after.find(name);
      if (left == before.end()) {
        compare(name, " (only in the new one)", none, right->second);
      } else if (right == after.end()) {
        compare(name, " (only in the old one)", left->second, none);
      } else {
        compare(name, "", left->second, right->second);
      }
    }
  }

  [[nodiscard]] bool is_nothing() const { return came_ + went_ + rows_ + sections_ == 0; }
  [[nodiscard]] std::string verdict() const {
    if (is_nothing()) return "No difference.\n";
    return counted(came_, "finding") + " came, " + counted(went_, "finding") + " went; " +
           counted(rows_, "row") + " and " + counted(sections_, "section") + " differ.\n";
  }
  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  static std::string line_of(char sign, const std::string& text) {
    return std::string(1, sign) + " " + printable(text) + "\n";
  }

  // The lines of one section that the other one has not, each as often as it has not.
  static std::string missing_in(const ComparedSection& other, const ComparedSection& section,
                                char sign) {
    std::map<std::uint64_t, std::size_t> there;
    for (const ComparedLine& line : other.lines) ++there[line.key];
    std::string told;
    std::size_t count = 0;
    for (const ComparedLine& line : section.lines) {
      std::size_t& left = there[line.key];
      if (left > 0) {
        --left;
      } else if (++count <= kMostShown) {
        told += line_of(sign, line.text);
      }
    }
    if (count > kMostShown) {
      told += line_of(sign, "and " + counted(count - kMostShown, "line") + " more");
    }
    return told;
  }

  void compare(const Sections::key_type& name, const char* only, const ComparedSection& before,
               const ComparedSection& after) {
    if (before.order == after.order && before.left == after.left) return;
    std::string told = missing_in(after, before, '-') + missing_in(before, after, '+');
    if (before.left + after.left > 0) {
      told += line_of(' ', "too long to be compared whole");
    } else if (told.empty() && before.is_unordered) {
      return;
    } else if (told.empty()) {
      told = line_of(' ', "the same lines in another order");
    }
    ++sections_;
    text_ += "\n" + printable(name.first + (name.second.empty() ? "" : ": " + name.second) + only) +
             "\n" + told;
  }

  std::size_t came_ = 0;
  std::size_t went_ = 0;
  std::size_t rows_ = 0;
  std::size_t sections_ = 0;
  std::string text_;
};

std::string head_of(const char* name, const json& manifest) {
  const std::string label = manifest.value("label", "");
  return printable(std::string(name) + "  " + manifest.value("host", "") +
                   (label.empty() ? "" : ", " + label) + ", " + manifest.value("started", "")) +
         "\n";
}

}  // namespace

int diff(const DiffOptions& options) {
  const NoiseRules rules = NoiseRules::load("diff.yaml", "diff.d", options.rules);
  const Bundle before(options.old_bundle);
  const Bundle after(options.new_bundle);
  Difference difference;
  try {
    const json old_manifest = manifest_of(before);
    const json new_manifest = manifest_of(after);
    difference.compare_findings(findings_of(old_manifest, rules), findings_of(new_manifest, rules));
    difference.compare_rows(outcomes_of(old_manifest), outcomes_of(new_manifest));
    difference.compare_sections(sections_of(before, old_manifest, rules),
                                sections_of(after, new_manifest, rules));
    Printing printing;
    static_cast<void>(printing.print(difference.verdict() + head_of("OLD", old_manifest) +
                                     head_of("NEW", new_manifest) + difference.text()));
  } catch (const json::exception& error) {
    throw Failure(std::string("a manifest is not one of sit's: ") + error.what());
  }
  return difference.is_nothing() ? kSame : kDifferent;
}

}  // namespace host
