#include "steps/steps.h"

#include <unistd.h>

#include <algorithm>
#include <map>

#include "sit/pelver.h"
#include "support/names.h"
#include "support/processes.h"
#include "support/programs.h"

namespace host {
namespace {

using Values = std::map<std::string, std::string>;

// The text with the values in the places of their {names}. What has no value is left for later.
std::string filled(const std::string& text, const Values& values) {
  std::string result;
  std::size_t done = 0;
  for (std::size_t open = text.find('{'); open != std::string::npos; open = text.find('{', done)) {
    const std::size_t close = std::min(text.find('}', open), text.size() - 1);
    const auto value = values.find(text.substr(open + 1, close - open - 1));
    result += text.substr(done, open - done);
    result += value == values.end() ? text.substr(open, close - open + 1) : value->second;
    done = close + 1;
  }
  return result + text.substr(done);
}

Step make_step(const StepKind& kind, const std::string& id, Values values) {
  Step step{.kind = &kind, .id = id};
  values["id"] = id;
  step.title = filled(kind.title, values);
  step.file = filled(kind.file, values);
  values["report"] = step.file;
  for (const char* argument : kind.arguments) step.arguments.push_back(filled(argument, values));
  return step;
}

std::string selector_of(const Installation& installation) {
  return std::to_string(installation.is_monitor ? SEL_MONITOR : SEL_PRODUCT_AND_WEBCLIENT);
}

std::string folder_of(const Installation& installation) {
  std::string name = installation.key;
  if (const std::size_t colon = name.find(':'); colon != std::string::npos) {
    name.replace(colon, 1, "-of-");
  }
  return name;
}

bool is_about(const StepKind& kind, const Installation& installation, bool is_other) {
  const bool is_kind = kind.on == On::kInstallation ||
                       (kind.on == On::kProduct && !installation.is_monitor) ||
                       (kind.on == On::kMonitor && installation.is_monitor) ||
                       (kind.on == On::kOtherInstallation && is_other && !installation.is_monitor);
  return is_kind && (kind.applies == nullptr || kind.applies(installation));
}

Subject installation_subject(const Installation& installation, const std::string& folder,
                             bool is_other, const std::vector<std::string>& logs) {
  const bool has_twin = folder != safe_name(folder_of(installation));
  Subject subject{.environment = installation.environment};
  for (const StepKind& kind : step_kinds()) {
    if (!is_about(kind, installation, is_other)) continue;
    subject.steps.push_back(make_step(
        kind, folder + "/" + kind.id,
        {{"folder", folder},
         {"key", installation.key},
         {"installation", installation.key + (has_twin ? " in " + installation.directory : "")},
         {"version", installation.version},
         {"selector", selector_of(installation)}}));
    subject.steps.back().version = installation.version;
    subject.steps.back().names = logs;
  }
  return subject;
}

// Steps that the user wishes for, each with a number or a name of its own.
class WishedSteps {
 public:
  WishedSteps(Subject& subject, Names& folders) : subject_(subject), folders_(folders) {}
  void add(On on, const Values& values, const std::string& name = "") {
    for (const StepKind& kind : step_kinds()) {
      if (kind.on != on) continue;
      const std::string own = name.empty() ? std::to_string(++numbers_[on]) : name;
      const std::string id = folders_.take(kind.id + ("-" + own));
      Values all = values;
      all["folder"] = id;
      subject_.steps.push_back(make_step(kind, id, all));
    }
  }

 private:
  Subject& subject_;
  Names& folders_;
  std::map<On, int> numbers_;
};

void add_steps(Subject& subject, On on) {
  for (const StepKind& kind : step_kinds()) {
    if (kind.on == on) subject.steps.push_back(make_step(kind, kind.id, {}));
  }
}

Subject extras_subject(const Environment& environment, const std::vector<ExtraCapture>& extras) {
  Subject subject{.environment = environment, .is_independent = true};
  // What administrators run is often in folders that others do not look in.
  subject.environment["PATH"] = whole_path();
  for (const StepKind& kind : step_kinds()) {
    for (const ExtraCapture& extra : extras) {
      if (kind.on != On::kExtra) continue;
      Step step =
          make_step(kind, std::string(kind.id) + "/" + extra.name,
                    {{"name", extra.name}, {"title", extra.title}, {"command", extra.command}});
      step.limit = extra.limit;
      step.cap = extra.cap;
      if (!is_here(extra.tool)) step.left_out = "not on this machine";
      if (extra.needs_root && ::geteuid() != 0) step.left_out = "for root alone";
      subject.steps.push_back(std::move(step));
    }
  }
  return subject;
}

std::string absolute(const std::string& path) {
  return path.empty() ? path : std::filesystem::absolute(path).lexically_normal().string();
}

}  // namespace

Step discovery_step(std::size_t number, const std::string& place) {
  const StepKind& kind = step_kinds().at(0);
  return make_step(kind, number == 1 ? kind.id : kind.id + ("-" + std::to_string(number)),
                   {{"place", place.empty() ? "s" : " in " + place}});
}

Step glance_step() { return make_step(step_kinds().at(1), step_kinds().at(1).id, {}); }

Subject machine_subject(const Environment& environment) {
  Subject machine{.environment = environment, .is_independent = true};
  add_steps(machine, On::kMachine);
  return machine;
}

std::vector<Subject> other_subjects(Subject versions,
                                    const std::vector<Installation>& installations,
                                    const Wishes& wishes) {
  const Environment environment = versions.environment;
  Names folders({".tmp", "summary.txt", "manifest.json", "index.html", "versions.txt", "system.txt",
                 "environment.txt", "extra"});
  add_steps(versions, On::kVersions);
  std::vector<Subject> subjects{std::move(versions)};
  for (const Installation& installation : installations) {
    subjects.push_back(installation_subject(installation, folders.take(folder_of(installation)),
                                            installation.environment != environment,
                                            wishes.brokers));
  }
  Subject servers{.environment = environment};
  WishedSteps server_steps(servers, folders);
  for (const auto& [root, name] : wishes.netscape) {
    server_steps.add(
        On::kNetscape,
        {{"root", absolute(root)}, {"name", name}, {"named", name.empty() ? "" : " " + name}});
  }
  for (const std::string& root : wishes.apache) {
    server_steps.add(On::kApache, {{"root", absolute(root)}});
  }
  Subject captures{.environment = environment};
  WishedSteps capture_steps(captures, folders);
  for (const std::string& command : wishes.commands) {
    constexpr std::size_t kLongestName = 40;
    capture_steps.add(On::kCommand, {{"command", command}},
                      program_of(command).substr(0, kLongestName));
  }
  for (const auto& [library, entry] : wishes.libraries) {
    capture_steps.add(On::kLibrary, {{"library", absolute(library)}, {"entry", entry}});
  }
  for (const Subject& wished : {extras_subject(environment, wishes.extras), servers, captures}) {
    if (!wished.steps.empty()) subjects.push_back(wished);
  }
  return subjects;
}

std::string why_absent(const StepKind& kind, const std::vector<Installation>& installations) {
  switch (kind.on) {
    case On::kNetscape:
      return "only with --netscape";
    case On::kApache:
      return "only with --apache";
    case On::kCommand:
      return "only with --capture";
    case On::kExtra:
      return "left out by --no-extras";
    case On::kLibrary:
      return "only with --capture-library";
    case On::kMonitor:
      return "no monitoring installation found (--monitoring names its init file)";
    case On::kOtherInstallation:
      return "only for a second --installation";
    case On::kDiscovery:
    case On::kMachine:
    case On::kVersions:
    case On::kInstallation:
    case On::kProduct:
      break;
  }
  std::string others;
  for (const Installation& installation : installations) {
    others += (others.empty() ? "" : ", ") + installation.key;
  }
  return installations.empty() ? "no installation found (--installation names one)"
                               : "not for " + others;
}

}  // namespace host
