// Lets every call of a group of library functions fail, one run after another, while a command
// works on the sample installation: fault_loop COMMAND SAMPLE [GROUP [N once|on]]
// Each run is a process of its own, so that initiation and discovery are part of it. A fault must
// hurt nothing and, where it costs anything, be told: by the result or by a line of the report.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "faults/fault_points.h"
#include "support/commands.h"

namespace {

namespace fs = std::filesystem;
using faults::Span;
using test::Command;
using test::kReport;
using test::kTemporary;

std::string sample;

std::string content_of(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::vector<int> open_descriptors() {
  std::vector<int> found;
  for (int fd = 0; fd < 64; ++fd) {
    if (::fcntl(fd, F_GETFD) != -1) found.push_back(fd);
  }
  return found;
}

std::string written_before_fault;
void keep_what_is_written() { written_before_fault = content_of(kReport); }

bool is_stated(int code) {
  constexpr int kLastSystemError = 133;
  return (code >= SIT_FAILED && code <= kLastSystemError) ||
         (code >= SIT_NO_REPORT_PATH && code <= SIT_DATABASE_LEFT_OUT);
}

// What a run leaves behind. Of its report, times, counts, how wide they are, and temporary names do
// not matter.
struct Trace {
  std::set<std::string> lines;
  std::map<std::string, std::uintmax_t> copies;
};
Trace trace_of_last_run() {
  static const std::regex varying("sit\\w{6}|[0-9 ]+");
  Trace trace;
  std::ifstream report(kReport, std::ios::binary);
  for (std::string line; std::getline(report, line);) {
    trace.lines.insert(std::regex_replace(line, varying, ""));
  }
  for (const auto& entry : fs::recursive_directory_iterator(test::kCopies)) {
    // What RunCommand captures is a report, too.
    if (!entry.is_regular_file() || entry.path().filename() == "out") continue;
    trace.copies[entry.path()] = entry.file_size();
  }
  return trace;
}

// Whether a run with a fault, which succeeded, left what the sound run does or tells why not; of a
// signal there is to be no trace. So far that is demanded of these groups, and as long as something
// can be written.
Trace sound;
bool is_told(const std::string& group, Span span) {
  static const std::set<std::string> demanding{"write", "fork", "close", "signal"};
  if (!demanding.contains(group) || (group == "write" && span == Span::kFromThereOn)) return true;
  // Without installations, and discovery may have met the fault, there may be nothing to report.
  if (!fs::exists(kReport)) return true;
  const Trace trace = trace_of_last_run();
  if (group == "signal") return trace.lines == sound.lines && trace.copies == sound.copies;
  // A report that cannot be written to cannot tell that.
  const bool has_all_text = trace.lines == sound.lines || group == "write";
  return !std::ranges::includes(sound.lines, trace.lines) ||
         (has_all_text && trace.copies == sound.copies);
}

void make_folders() {
  fs::remove_all("disk");
  for (const char* folder : {"disk/reports", test::kCopies, kTemporary}) {
    fs::create_directories(folder);
  }
}

// What is wrong after a run with a fault; empty when nothing is.
std::string fault_found(const Command& command, int code, const std::vector<int>& descriptors) {
  if (!is_stated(code)) return "returned " + std::to_string(code);
  if (open_descriptors() != descriptors) return "a descriptor was left open";
  if (::waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD) return "a child was left";
  if (!fs::is_empty(kTemporary)) return "a temporary file was left";
  if (pc != nullptr && pc->reportDir[0] != '\0') return "the report was left open";
  if (!content_of(kReport).starts_with(written_before_fault)) return "the report lost text";

  make_folders();
  const int again = command.run(kReport, SIT_CREATE);
  if (!is_stated(again)) return "returned " + std::to_string(again) + " afterwards";
  const std::string text = content_of(kReport);
  const bool is_whole =
      text.empty() || command.opens == test::Opens::kAtEnd || text.ends_with("\n==End of Log==\n");
  return is_whole ? "" : "wrote no whole report afterwards";
}

enum Exit { kGood, kFaulty, kNoFaultMet };

void prepare(const Command& command) {
  make_folders();
  if (std::string(command.name) != "OBCopyFiles") return;
  GetOBValidationInfo(kTemporary, "validation", "10.1B", SIT_CREATE, 0, "", "");
  make_folders();
}

// A run in this process, with the n-th call of the group failing.
Exit run_once(const Command& command, const std::string& group, int n, Span span) {
  prepare(command);
  const std::vector<int> descriptors = open_descriptors();
  faults::arm(group, n, span, keep_what_is_written);
  const int code = command.run(kReport, SIT_CREATE);
  if (faults::disarm() == 0) return kNoFaultMet;
  std::string found = code == SIT_OK && !is_told(group, span) ? "told nothing of it" : "";
  if (found.empty()) found = fault_found(command, code, descriptors);
  if (!found.empty()) std::cerr << found << std::endl;
  return found.empty() ? kGood : kFaulty;
}

// Whether a run without a fault succeeds; it is what the others are compared with.
bool learn_sound_run(const Command& command) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit((prepare(command), command.run(kReport, SIT_CREATE)) == SIT_OK ? 0 : 1);
  int status = 0;
  ::waitpid(child, &status, 0);
  sound = trace_of_last_run();
  return status == 0;
}

// Whether the run met a fault and all was well; says so if not well.
Exit run_apart(const Command& command, const std::string& group, int n, Span span) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(run_once(command, group, n, span));
  int status = 0;
  ::waitpid(child, &status, 0);
  if (WIFEXITED(status) && WEXITSTATUS(status) != kFaulty) {
    return static_cast<Exit>(WEXITSTATUS(status));
  }
  std::cerr << "status " << status << "; to repeat: fault_loop " << command.name << " " << sample
            << " " << group << " " << n << (span == Span::kOnce ? " once" : " on") << std::endl;
  return kFaulty;
}

// Whether faults, of one group if it is named, were met, and all was well.
bool run_all(const Command& command, const char* only) {
  int met = 0;
  bool all_well = true;
  for (const std::string& group : faults::groups()) {
    for (const Span span : {Span::kOnce, Span::kFromThereOn}) {
      if (only != nullptr && group != only) continue;
      // A call that is always interrupted is begun again for ever.
      if (group == "signal" && span == Span::kFromThereOn) continue;
      for (int n = 1;; ++n, ++met) {
        const Exit exit = run_apart(command, group, n, span);
        if (exit == kNoFaultMet) break;
        all_well = all_well && exit == kGood;
      }
    }
  }
  std::cout << command.name << ": " << met << " runs, each with a fault\n";
  return all_well && met > 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3 || argc > 6) return 2;
  const auto* command = std::ranges::find(test::kCommands, std::string(argv[1]), &Command::name);
  if (command == std::end(test::kCommands)) return 2;
  sample = fs::absolute(argv[2]);
  std::string scratch = (fs::temp_directory_path() / "sit-faults-XXXXXX").string();
  if (::mkdtemp(scratch.data()) == nullptr) return 2;
  fs::current_path(scratch);
  fs::create_directory_symlink(sample, "sample");
  fs::create_directory("bin");
  // What takes long and says nothing about the plug-in.
  for (const char* tool : {"bin/openssl", "bin/ps", "bin/netstat", "bin/sysctl"}) {
    std::ofstream(tool) << "#!/bin/sh\necho " << tool << "\n";
    fs::permissions(tool, fs::perms::owner_all);
  }
  ::setenv("PATH", (scratch + "/bin:" + std::getenv("PATH")).c_str(), 1);
  ::setenv("TMPDIR", (scratch + "/" + kTemporary).c_str(), 1);
  ::setenv("PHM", (sample + "/pel").c_str(), 1);
  ::setenv("DELVONINIT", (sample + "/delvon/delvon.ini").c_str(), 1);
  bool all_well = learn_sound_run(*command);
  if (argc < 6) {
    all_well = run_all(*command, argv[3]) && all_well;
  } else {
    const Span span = std::string(argv[5]) == "once" ? Span::kOnce : Span::kFromThereOn;
    all_well = run_apart(*command, argv[3], static_cast<int>(std::strtol(argv[4], nullptr, 10)),
                         span) != kFaulty;
  }
  fs::current_path("/");
  fs::remove_all(scratch);
  return all_well ? 0 : 1;
}
