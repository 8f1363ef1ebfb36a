#include "fleet/fleet.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iostream>
#include <kainjow/mustache.hpp>
#include <nlohmann/json.hpp>
#include <sstream>

#include "collect.h"
#include "fleet/machines.h"
#include "fleet/shared.h"
#include "support/data_file.h"
#include "support/failure.h"
#include "support/text.h"

namespace host {
namespace {

namespace fs = std::filesystem;
using Data = kainjow::mustache::data;
using nlohmann::json;

constexpr std::size_t kMostNames = 12;      // of machines, in a line
constexpr std::size_t kMostFindings = 500;  // in text and page
constexpr std::size_t kMostValues = 50;     // of a fact

std::string names_of(const std::vector<std::string>& names) {
  std::string all;
  for (std::size_t i = 0; i < std::min(names.size(), kMostNames); ++i) {
    all += (all.empty() ? "" : ", ") + names[i];
  }
  if (names.size() > kMostNames)
    all += " and " + std::to_string(names.size() - kMostNames) + " more";
  return all;
}

struct Picture {
  Fleet fleet;
  std::vector<SharedFinding> findings;
  std::vector<Difference> differences;

  // "9 machines: 7 complete, 1 partial, 1 unreachable".
  [[nodiscard]] std::string verdict() const {
    std::map<MachineState, std::size_t> counts;
    for (const Machine& machine : fleet.machines) ++counts[machine.state];
    std::string all;
    for (const auto& [state, count] : counts) {
      all += (all.empty() ? ": " : ", ") + std::to_string(count) + " " + text_of(state);
    }
    return counted(fleet.machines.size(), "machine") + all;
  }
  [[nodiscard]] std::string share_of(const SharedFinding& finding) const {
    return std::to_string(finding.machines.size()) + " of " + std::to_string(fleet.machines.size());
  }
};

void write_title(std::ostream& out, const std::string& title) {
  out << "\n" << title << "\n" << std::string(title.size(), '=') << "\n";
}

void write_machine(std::ostream& out, const Machine& machine) {
  out << printable(machine.name) << ": " << text_of(machine.state)
      << (machine.why.empty() ? "" : ", " + printable(machine.why)) << ", "
      << counted(machine.findings.size(), "finding")
      << (machine.started.empty() ? "" : ", " + printable(machine.started))
      << (machine.bundle.empty() ? "" : ", " + printable(machine.bundle)) << "\n";
}

void write_difference(std::ostream& out, const Difference& difference) {
  out << printable(difference.fact) << "\n";
  for (std::size_t i = 0; i < std::min(difference.values.size(), kMostValues); ++i) {
    const auto& [value, names] = difference.values[i];
    out << "    " << names.size() << "  " << printable(value.empty() ? "none" : value) << ": "
        << printable(names_of(names)) << "\n";
  }
}

std::string text_of_fleet(const Picture& picture) {
  std::ostringstream out;
  out << "SIT FLEET\n=========\n" << picture.verdict() << "\n";
  write_title(out, "FINDINGS THAT MACHINES SHARE");
  if (picture.findings.empty()) out << "None.\n";
  for (std::size_t i = 0; i < std::min(picture.findings.size(), kMostFindings); ++i) {
    const SharedFinding& finding = picture.findings[i];
    out << picture.share_of(finding) << ": " << printable(finding.text) << "\n    "
        << printable(names_of(finding.machines)) << "\n";
  }
  write_title(out, "WHERE MACHINES DIFFER");
  if (picture.differences.empty()) out << "Nowhere.\n";
  for (const Difference& difference : picture.differences) write_difference(out, difference);
  write_title(out, "MACHINES");
  for (const Machine& machine : picture.fleet.machines) write_machine(out, machine);
  for (const std::string& passed : picture.fleet.passed) {
    out << "passed over, for there is a newer one of its machine: " << printable(passed) << "\n";
  }
  return out.str();
}

std::string json_of_fleet(const Picture& picture) {
  json all{{"format", 1},
           {"verdict", picture.verdict()},
           {"machines", json::array()},
           {"findings", json::array()},
           {"differences", json::array()},
           {"passed", picture.fleet.passed}};
  for (const Machine& machine : picture.fleet.machines) {
    all["machines"].push_back({{"name", machine.name},
                               {"state", text_of(machine.state)},
                               {"why", machine.why},
                               {"started", machine.started},
                               {"bundle", machine.bundle},
                               {"facts", machine.facts},
                               {"findings", machine.findings}});
  }
  for (const SharedFinding& finding : picture.findings) {
    all["findings"].push_back({{"text", finding.text}, {"machines", finding.machines}});
  }
  for (const Difference& difference : picture.differences) {
    json values = json::array();
    for (const auto& [value, names] : difference.values) {
      values.push_back({{"value", value}, {"machines", names}});
    }
    all["differences"].push_back({{"fact", difference.fact}, {"values", values}});
  }
  return all.dump(1, ' ', false, json::error_handler_t::replace) + "\n";
}

std::string content_of(const std::string& data_name) {
  std::ifstream file(data_file(data_name), std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  if (!file || text.str().empty()) throw Failure(data_name + " cannot be read");
  return text.str();
}

Data item_of(const std::string& name, const std::string& value) {
  Data item;
  item.set("name", printable(name));
  item.set("value", printable(value));
  return item;
}

// Where a file below the page is, whatever its name.
std::string link_to(const std::string& file) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string link = "./";
  for (const char c : file) {
    const auto byte = static_cast<unsigned char>(c);
    const bool is_plain =
        std::isalnum(byte) != 0 || std::string_view("/._-").find(c) != std::string_view::npos;
    link +=
        is_plain ? std::string(1, c) : std::string{'%', kDigits[byte >> 4U], kDigits[byte & 15U]};
  }
  return link;
}

// Their names, which lead to their rows.
class Who {
 public:
  explicit Who(const std::vector<Machine>& machines) {
    for (const Machine& machine : machines) rows_.emplace(machine.name, rows_.size());
  }
  [[nodiscard]] std::string row_of(const std::string& machine) const {
    return "m" + std::to_string(rows_.at(machine));
  }
  void add_to(Data& item, const std::vector<std::string>& names) const {
    Data who{Data::type::list};
    for (std::size_t i = 0; i < std::min(names.size(), kMostNames); ++i) {
      Data one;
      one.set("machine", printable(names[i]));
      one.set("row", row_of(names[i]));
      who << one;
    }
    item.set("who", who);
    const std::size_t more = names.size() - std::min(names.size(), kMostNames);
    item.set("more", more == 0 ? "" : "and " + std::to_string(more) + " more");
  }

 private:
  std::map<std::string, std::size_t> rows_;
};

std::string page_of_fleet(const Picture& picture) {
  const Who who(picture.fleet.machines);
  Data findings{Data::type::list};
  for (std::size_t i = 0; i < std::min(picture.findings.size(), kMostFindings); ++i) {
    const SharedFinding& finding = picture.findings[i];
    Data item = item_of(picture.share_of(finding), finding.text);
    who.add_to(item, finding.machines);
    findings << item;
  }
  Data facts{Data::type::list};
  for (const Difference& difference : picture.differences) {
    Data values{Data::type::list};
    for (std::size_t i = 0; i < std::min(difference.values.size(), kMostValues); ++i) {
      const auto& [value, names] = difference.values[i];
      Data item = item_of(std::to_string(names.size()), value.empty() ? "none" : value);
      who.add_to(item, names);
      values << item;
    }
    Data fact;
    fact.set("fact", printable(difference.fact));
    fact.set("values", values);
    facts << fact;
  }
  Data machines{Data::type::list};
  for (const Machine& machine : picture.fleet.machines) {
    Data item = item_of(machine.name, machine.started);
    item.set("why", printable(machine.why));
    item.set("row", who.row_of(machine.name));
    item.set("state", text_of(machine.state));
    item.set("class", machine.state == MachineState::kComplete ? "good" : "bad");
    item.set("findings", std::to_string(machine.findings.size()));
    item.set("page", link_to(machine.page));
    item.set("has_page", !machine.page.empty());
    machines << item;
  }
  Data data;
  data.set("style", content_of("style.css"));
  data.set("verdict", picture.verdict());
  data.set("findings", findings);
  data.set("facts", facts);
  data.set("machines", machines);
  kainjow::mustache::mustache page(content_of("fleet.html.mustache"));
  if (!page.is_valid()) throw Failure("fleet.html.mustache: " + page.error_message());
  return page.render(data);
}

// Nobody sees half a file.
void write(const fs::path& path, const std::string& text) {
  const fs::path unfinished = path.string() + ".new";
  std::ofstream file(unfinished, std::ios::binary | std::ios::trunc);
  file << text << std::flush;
  std::error_code error;
  if (file) fs::rename(unfinished, path, error);
  if (file && !error) return;
  fs::remove(unfinished, error);
  throw Failure(path.string() + " cannot be written");
}

}  // namespace

int fleet(const FleetOptions& options) {
  const NoiseRules rules = NoiseRules::load("fleet.yaml", "fleet.d", options.rules);
  Picture picture{.fleet = find_machines(options.folder), .findings = {}, .differences = {}};
  if (picture.fleet.machines.empty()) {
    throw Failure(options.folder.string() + " holds no collections");
  }
  picture.findings = shared_findings(picture.fleet.machines, rules);
  picture.differences = differences(picture.fleet.machines);
  const fs::path output = options.output.empty() ? options.folder : options.output;
  write(output / "fleet.txt", text_of_fleet(picture));
  write(output / "fleet.json", json_of_fleet(picture));
  // Links lead from where the collections are.
  if (output == options.folder) write(output / "fleet.html", page_of_fleet(picture));
  std::cout << without_controls((output / "fleet.txt").string()) << "\n" << std::flush;
  std::cerr << printable(picture.verdict()) << "\n";
  const bool is_whole = std::ranges::all_of(picture.fleet.machines, [](const Machine& machine) {
    return machine.state == MachineState::kComplete;
  });
  return is_whole && std::cout ? kComplete : kPartial;
}

}  // namespace host
