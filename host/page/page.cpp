#include "page/page.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <kainjow/mustache.hpp>
#include <map>
#include <sstream>

#include "page/report_text.h"
#include "result/summary.h"
#include "support/data_file.h"
#include "support/failure.h"
#include "support/text.h"

namespace host {
namespace {

using Data = kainjow::mustache::data;

constexpr std::uint64_t kMostOfAFile = 512 << 10;  // of its text in the page
constexpr std::uint64_t kMostOfAll = 8 << 20;

std::string content_of(const std::string& data_name) {
  std::ifstream file(data_file(data_name), std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  if (!file || text.str().empty()) throw Failure(data_name + " cannot be read");
  return text.str();
}

Data list_of(const std::vector<Field>& fields) {
  Data list{Data::type::list};
  for (const Field& field : fields) {
    Data item;
    item.set("name", printable(field.name));
    item.set("value", printable(field.value));
    list << item;
  }
  return list;
}

class Page {
 public:
  Page(const OutputFolder& folder, const Collection& collection,
       const std::vector<Problem>& problems)
      : folder_(folder), collection_(collection) {
    for (const Row& row : collection.rows) {
      if (row.bytes > 0) row_of_[row.step.file] = &row;
    }
    for (const Problem& problem : problems) {
      const auto row = row_of_.find(problem.file);
      if (row != row_of_.end()) wrong_[row->second].insert(problem.line);
    }
    data_.set("style", content_of("style.css"));
    data_.set("host", printable(collection.host));
    data_.set("verdict", printable(verdict_of(collection)));
    data_.set("complete", collection.is_complete());
    data_.set("head", list_of(head_of(collection)));
    data_.set("machine", list_of(machine_of(collection.glance)));
    data_.set("nothing", problems.empty());
    set_problems(problems);
    set_rows();
    set_files();
  }

  // Reports are read while the page is being written, one after the other.
  void write() {
    kainjow::mustache::mustache page(content_of("index.html.mustache"));
    if (!page.is_valid()) throw Failure("index.html.mustache: " + page.error_message());
    const Descriptor file = folder_.create(kPageFile);
    int error = file.is_open() ? 0 : errno;
    page.render(data_, [&](const std::string& part) {
      if (error != 0) return;
      const ssize_t written = ::write(file.get(), part.data(), part.size());
      if (written != static_cast<ssize_t>(part.size())) error = written < 0 ? errno : ENOSPC;
    });
    if (error == 0) return;
    if (file.is_open()) folder_.remove(kPageFile);
    throw Failure(error_text(error));
  }

 private:
  // Where a problem stands: in a report of the page, or in a file beside it.
  [[nodiscard]] std::string target_of(const Problem& problem) const {
    const auto row = row_of_.find(problem.file);
    if (row == row_of_.end()) return collection_.masked(problem.file);
    const std::string line = problem.line == 0 ? "" : ":" + std::to_string(problem.line);
    return "#" + row->second->step.id + line;
  }

  void set_problems(const std::vector<Problem>& problems) {
    constexpr std::size_t kMost = 200;
    Data list{Data::type::list};
    for (std::size_t i = 0; i < std::min(problems.size(), kMost); ++i) {
      const Problem& problem = problems[i];
      Data item;
      item.set("text", printable(collection_.masked(problem.text)));
      const std::string line = problem.line == 0 ? "" : ":" + std::to_string(problem.line);
      item.set("place", printable(collection_.masked(problem.file) + line));
      item.set("href", printable(target_of(problem)));
      item.set("has_place", !problem.file.empty());
      list << item;
    }
    data_.set("problems", list);
    data_.set("more_problems", problems.size() > kMost);
  }

  void set_rows() {
    Data list{Data::type::list};
    for (const Row& row : collection_.rows) {
      if (row.outcome == RowOutcome::kSkipped) continue;
      Data item;
      item.set("id", row.step.id);
      item.set("title", printable(collection_.masked(row.step.title)));
      item.set("outcome", text_of(row.outcome));
      item.set("class", is_fault(row.outcome) ? "bad" : "good");
      item.set("why", printable(collection_.masked(row.why)));
      item.set("seconds", seconds_text(row.seconds));
      item.set("has_file", row.bytes > 0);
      item.set("file", row.step.file);
      item.set("open", wrong_.contains(&row));
      if (row.bytes > 0) set_report(item, row);
      list << item;
    }
    data_.set("rows", list);
  }

  void set_report(Data& item, const Row& row) {
    Data sections{Data::type::list};
    for (const Section& section : row.report->sections()) {
      if (section.line == 0 || section.title.empty()) continue;
      Data one;
      one.set("title", printable(collection_.masked(section.title)));
      one.set("line", std::to_string(section.line));
      one.set("outcome", text_of(section.outcome));
      one.set("class", is_fault(section.outcome) ? "bad" : "good");
      sections << one;
    }
    item.set("sections", sections);
    item.set("text", Data{kainjow::mustache::lambda2(
                         [this, &row](const std::string& /*text*/, const auto& /*renderer*/) {
                           return text_of_report(row);
                         })});
  }

  [[nodiscard]] std::string text_of_report(const Row& row) {
    MarkedLines marked;
    for (const Section& section : row.report->sections()) marked.titles.insert(section.line);
    if (const auto wrong = wrong_.find(&row); wrong != wrong_.end()) marked.wrong = wrong->second;
    const std::uint64_t most = std::min(kMostOfAFile, kMostOfAll - std::min(kMostOfAll, shown_));
    bool is_whole = true;
    std::string html = html_of(folder_, row.step.file, row.step.id, marked, most, is_whole);
    shown_ += html.size();
    if (!is_whole) html += "<em>The rest is in the file.</em>\n";
    return html;
  }

  void set_files() {
    Data list{Data::type::list};
    for (const std::string& file : collection_.contents.files) {
      if (row_of_.contains(file) || file == kSummaryFile || file == kManifestFile) continue;
      Data item;
      item.set("file", printable(file));
      list << item;
    }
    data_.set("files", list);
  }

  const OutputFolder& folder_;
  const Collection& collection_;
  Data data_;
  std::map<std::string, const Row*> row_of_;  // by its file
  std::map<const Row*, std::set<std::uint64_t>> wrong_;
  std::uint64_t shown_ = 0;
};

}  // namespace

void write_page(const OutputFolder& folder, const Collection& collection,
                const std::vector<Problem>& problems) {
  Page(folder, collection, problems).write();
}

}  // namespace host
