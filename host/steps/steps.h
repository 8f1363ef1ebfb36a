// The steps of a collection, as data.
#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "report/kinds.h"
#include "steps/captures.h"
#include "steps/installation.h"

namespace host {

// What to collect besides this machine and its installations.
struct Wishes {
  std::vector<std::pair<std::string, std::string>> netscape;   // server root, server name
  std::vector<std::string> apache;                             // server root
  std::vector<std::string> commands;                           // to capture
  std::vector<ExtraCapture> extras;                            // the same, as rules tell
  std::vector<std::pair<std::string, std::string>> libraries;  // to capture: path, entry point
  std::vector<std::string> brokers;  // whose logs to copy, as OBCopyFiles names them; none: all
};

// What a step is about, hence how often there is one.
enum class On {
  kDiscovery,
  kMachine,
  kVersions,           // of the machine and of the first installation
  kOtherInstallation,  // than the one that the machine's own versions tell of
  kInstallation,
  kProduct,
  kMonitor,
  kNetscape,
  kApache,
  kCommand,
  kExtra,
  kLibrary
};

// What a worker does for a step.
enum class Work { kCall, kCallForEachLog, kDiscovery, kGlance };

struct StepKind {
  const char* id;
  On on;
  const char* title;  // with {placeholders}, as the arguments and the file
  Work work;
  const char* call = "";  // an entry of the catalogue
  std::vector<const char*> arguments = {};
  const char* file = "";
  const ReportKind& (*report)() = nullptr;
  bool is_independent = false;  // of any installation
  bool appends = false;         // the call makes the file itself
  const char* needs = "";       // a step of the same subject that goes before
  // Releases that have no such report; null: all have it.
  bool (*applies)(const Installation&) = nullptr;
};

[[nodiscard]] const std::vector<StepKind>& step_kinds();

struct Step {
  const StepKind* kind = nullptr;
  std::string id;
  std::string title = {};
  std::string file = {};  // below the output folder; empty: none
  std::vector<std::string> arguments = {};
  std::string version = {};             // whole, of its installation
  std::vector<std::string> names = {};  // of the logs wanted
  std::string left_out = {};            // why it is not to be done
  double limit = 0;                     // of its commands, in seconds; 0: that of all
  std::uint64_t cap = 0;                // bytes that its file may have; 0: those of all
};

// Whether it is the output of a command that a shell runs.
[[nodiscard]] inline bool is_capture(const Step& step) {
  return step.kind->on == On::kCommand || step.kind->on == On::kExtra;
}

// What one worker does, a step after the other.
struct Subject {
  Environment environment;
  bool is_independent = false;  // of any installation
  std::vector<Step> steps = {};
};

// `place` tells where it looks, where it was told to.
[[nodiscard]] Step discovery_step(std::size_t number, const std::string& place);
[[nodiscard]] Step glance_step();

// What needs no installation to be known.
[[nodiscard]] Subject machine_subject(const Environment& environment);

// The rest. `versions` is the subject of the versions, with its environment.
[[nodiscard]] std::vector<Subject> other_subjects(Subject versions,
                                                  const std::vector<Installation>& installations,
                                                  const Wishes& wishes);

// Why there is no step of this kind.
[[nodiscard]] std::string why_absent(const StepKind& kind,
                                     const std::vector<Installation>& installations);

}  // namespace host
