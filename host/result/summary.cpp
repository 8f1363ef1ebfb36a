#include "result/summary.h"

#include <algorithm>
#include <array>
#include <iomanip>
#include <map>
#include <sstream>

#include "support/text.h"

namespace host {
namespace {

constexpr std::size_t kWidth = 80;
constexpr std::size_t kIndent = 4;
constexpr std::size_t kMostProblems = 40;

std::string time_text(std::time_t time) {
  std::tm local{};
  ::localtime_r(&time, &local);
  std::array<char, 64> text{};
  static_cast<void>(std::strftime(text.data(), text.size(), "%a %Y-%m-%d %H:%M:%S %z", &local));
  return text.data();
}

void write_title(std::ostream& out, const std::string& title) {
  out << "\n" << title << "\n" << std::string(title.size(), '=') << "\n";
}

// A field, further lines below the first.
void write_field(std::ostream& out, const std::string& name, const std::string& value) {
  constexpr std::size_t kNameWidth = 12;
  std::string label = name;
  for (const std::string& line : wrapped(value, kWidth - kNameWidth)) {
    out << std::left << std::setw(static_cast<int>(kNameWidth)) << label << line << "\n";
    label.clear();
  }
}

std::string joined(const std::vector<std::string>& texts, const char* between) {
  std::string all;
  for (const std::string& text : texts) {
    if (!text.empty()) all += (all.empty() ? "" : between) + text;
  }
  return all;
}

// As a shell would take them.
std::vector<std::string> quoted(std::vector<std::string> words) {
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789@%+=:,./_-";
  constexpr std::string_view kQuote = "'\\''";
  for (std::string& word : words) {
    if (!word.empty() && word.find_first_not_of(kPlain) == std::string::npos) continue;
    for (std::size_t at = 0; (at = word.find('\'', at)) != std::string::npos; at += kQuote.size()) {
      word.replace(at, 1, kQuote);
    }
    word.insert(0, 1, '\'').push_back('\'');
  }
  return words;
}

// What the user could not get to see, by the reports' own words.
std::string denied_text(const Collection& collection) {
  std::string files;
  for (const Row& row : collection.rows) {
    if (row.report == nullptr || row.report->denied() == 0) continue;
    files += (files.empty() ? "" : ", ") + counted(row.report->denied(), "line") + " of " +
             row.step.file;
  }
  return files.empty() ? "" : "; \"permission denied\" in " + files;
}

std::string masks_text(const Masking& masking) {
  if (!masking.is_on) return "NOT masked, as asked for with --unmasked";
  if (!masking.failed.empty()) return "NOT ALL MASKED; see below";
  std::uint64_t all = 0;
  std::string rules;
  for (const auto& [rule, count] : masking.counts) {
    all += count;
    rules += (rules.empty() ? "" : ", ") + std::to_string(count) + " " + rule;
  }
  return all == 0 ? "none found to mask"
                  : counted(all, "mask") + " (" + rules + "); see " + masking.list;
}

void write_problems(std::ostream& out, const Collection& collection,
                    const std::vector<Problem>& problems) {
  write_title(out, "MISSING OR WRONG");
  if (problems.empty()) out << "Nothing.\n";
  for (std::size_t i = 0; i < std::min(problems.size(), kMostProblems); ++i) {
    const Problem& problem = problems[i];
    std::string mark = std::to_string(i + 1);
    mark.insert(0, mark.size() < kIndent - 2 ? kIndent - 2 - mark.size() : 0, ' ');
    for (const std::string& line : wrapped(collection.masked(problem.text), kWidth - kIndent)) {
      out << std::left << std::setw(static_cast<int>(kIndent)) << mark << line << "\n";
      mark.clear();
    }
    if (problem.file.empty()) continue;
    out << std::string(kIndent, ' ') << collection.masked(problem.file);
    if (problem.line != 0) out << ":" << problem.line;
    out << "\n";
  }
  if (problems.size() > kMostProblems) {
    out << "and " << problems.size() - kMostProblems << " more, in manifest.json\n";
  }
}

std::string uptime_text(double seconds) {
  constexpr long kMinute = 60;
  constexpr long kHour = 60 * kMinute;
  constexpr long kDay = 24 * kHour;
  const auto whole = static_cast<long>(seconds);
  std::ostringstream text;
  text << whole / kDay << " d " << whole % kDay / kHour << " h " << whole % kHour / kMinute
       << " min";
  return text.str();
}

std::string states_text(const char* what, const std::vector<std::string>& names) {
  if (names.empty()) return std::string("none ") + what;
  return std::to_string(names.size()) + " " + what + " (" + joined(names, ", ") + ")";
}

std::string table_row(const std::string& outcome, const std::string& seconds,
                      const std::string& bytes, const std::string& title) {
  constexpr int kOutcome = 10;
  constexpr int kSeconds = 8;
  constexpr int kBytes = 11;
  constexpr std::size_t kTitle = kWidth - kOutcome - kSeconds - kBytes - 2;
  std::ostringstream row;
  row << std::left << std::setw(kOutcome) << outcome << std::right << std::setw(kSeconds) << seconds
      << std::setw(kBytes) << bytes << "  " << fitted(title, kTitle) << "\n";
  return row.str();
}

void write_row(std::ostream& out, const Collection& collection, const Row& row) {
  out << table_row(text_of(row.outcome), seconds_text(row.seconds),
                   row.step.file.empty() ? "" : std::to_string(row.bytes),
                   collection.masked(row.step.title));
  const std::string indent(kWidth - 49, ' ');
  if (row.bytes > 0) out << indent << row.step.file << "\n";
  for (const Cut& cut : collection.contents.cuts) {
    const bool is_its_own = cut.is_meant && cut.file == row.step.file;
    if (is_its_own) out << indent << "of " << size_text(cut.bytes) << " both ends\n";
  }
  if (row.outcome == RowOutcome::kOk && is_capture(row.step) && !row.why.empty()) {
    out << indent << collection.masked(row.why) << "\n";
  }
}

void write_rows(std::ostream& out, const Collection& collection) {
  write_title(out, "ROWS");
  out << table_row("Outcome", "Seconds", "Bytes", "Title, and file");
  std::map<std::string, std::vector<std::string>> skipped;
  for (const Row& row : collection.rows) {
    if (row.outcome == RowOutcome::kSkipped) {
      skipped[row.why].push_back(row.step.id);
    } else {
      write_row(out, collection, row);
    }
  }
  for (const auto& [why, ids] : skipped)
    write_field(out, "skipped", collection.masked(why) + ": " + joined(ids, ", "));
}

}  // namespace

std::vector<Field> head_of(const Collection& collection) {
  std::vector<Field> fields;
  const auto add = [&fields](const char* name, const std::string& value) {
    fields.push_back({name, value});
  };
  add("Machine", collection.host);
  if (!collection.label.empty()) add("Label", collection.masked(collection.label));
  add("Collected", time_text(collection.started) + ", in " + seconds_text(collection.seconds) +
                       " s, by " +
                       (collection.user.empty() ? "a user without a name" : collection.user));
  add("With",
      "sit " + collection.tool_version + ", plug-in " +
          (collection.plugin_version.empty() ? "of unknown version" : collection.plugin_version));
  add("Options", collection.options.empty()
                     ? "none"
                     : collection.masked(joined(quoted(collection.options), " ")));
  add("Root", (collection.is_root ? "yes" : "no: what only root may see is not here") +
                  denied_text(collection));
  for (const Row& row : collection.rows) {
    if (row.step.kind->work == Work::kDiscovery) add("Products", collection.masked(row.why));
  }
  if (!collection.note.empty()) add("Note", collection.note);
  add("Secrets", masks_text(collection.contents.masking));
  add("Outcome", verdict_of(collection));
  return fields;
}

std::vector<Field> machine_of(const Glance& glance) {
  std::vector<Field> fields;
  const auto add = [&fields](const char* name, const std::string& value) {
    fields.push_back({name, value});
  };
  if (glance.uptime < 0) return fields;
  add("Up", uptime_text(glance.uptime));
  add("Load", glance.load + " on " + counted(glance.cores, "core"));
  add("Memory",
      size_text(glance.memory) + ", of which " + size_text(glance.memory_available) + " available");
  add("Swap", glance.swap == 0
                  ? "none"
                  : size_text(glance.swap) + ", of which " + size_text(glance.swap_free) + " free");
  add("Over 90 %", glance.full.empty() ? "no file system" : joined(glance.full, ", "));
  add("Processes", std::to_string(glance.processes) + ", " +
                       states_text("waiting (D)", glance.waiting) + ", " +
                       states_text("ended but not taken (Z)", glance.zombies));
  const char* clock = glance.clock_is_synchronised ? "synchronised" : "NOT synchronised";
  add("Clock", glance.clock_is_known ? clock : "not known");
  return fields;
}

std::string verdict_of(const Collection& collection) {
  if (collection.is_complete()) return "Complete";
  const auto faulty = std::count_if(collection.rows.begin(), collection.rows.end(),
                                    [](const Row& row) { return is_fault(row.outcome); });
  const auto cuts =
      static_cast<std::size_t>(std::ranges::count(collection.contents.cuts, false, &Cut::is_meant));
  return "Not complete: " + std::to_string(faulty) + " of " +
         counted(collection.rows.size(), "row") + " not ok" +
         (cuts == 0 ? "" : "; " + counted(cuts, "file") + " cut") +
         (collection.given_up.empty() ? "" : "; " + collection.given_up);
}

std::string summary_of(const Collection& collection, const std::vector<Problem>& problems) {
  std::ostringstream out;
  out << "SIT COLLECTION\n==============\n";
  for (const auto& [name, value] : head_of(collection)) write_field(out, name, value);
  write_problems(out, collection, problems);
  write_title(out, "THE MACHINE");
  const std::vector<Field> machine = machine_of(collection.glance);
  if (machine.empty()) out << "Not looked at.\n";
  for (const auto& [name, value] : machine) write_field(out, name, value);
  write_rows(out, collection);
  return out.str();
}

}  // namespace host
