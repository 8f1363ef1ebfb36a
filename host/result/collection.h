inline constexpr const char* kSummaryFile = "summary.txt";
inline constexpr const char* kManifestFile = "manifest.json";

// A finished collection, as summary and manifest tell of it.
#pragma once

#include <ctime>
#include <deque>
#include <string>
#include <vector>

#include "mask/masker.h"
#include "report/file_findings.h"
#include "result/contents.h"
#include "result/row.h"
#include "work/glance.h"

namespace host {

struct Collection {
  std::string tool_version;
  std::string plugin_version;
  std::string label;
  std::string host;
  std::string user;
  bool is_root = false;
  std::vector<std::string> options;
  std::time_t started = 0;
  double seconds = 0;
  std::string given_up;  // why; empty when it was not
  std::string note;      // about what the run itself changes in what it sees
  const std::deque<Row>& rows;
  const std::vector<EndedCommand>& commands;
  const Glance& glance;
  const Contents& contents;
  const std::vector<FileFinding>& in_files;
  Masker* masker = nullptr;  // null: nothing is masked

  // A text as summary and manifest may tell it.
  [[nodiscard]] std::string masked(const std::string& text) const {
    return masker == nullptr ? text : masker->masked(text);
  }
  [[nodiscard]] bool is_complete() const;
};

// Something missing or wrong, the worst first.
struct Problem {
  int rank;
  std::string text;
  std::string file = {};  // empty: none
  std::size_t line = 0;   // 0: none
};

[[nodiscard]] std::vector<Problem> problems_of(const Collection& collection);

}  // namespace host
