// Lets every call of a group of library functions fail, one run after another, while a command
// works on the sample installation: fault_loop COMMAND SAMPLE [GROUP N once|on]
// Each run is a process of its own, so that initiation and discovery are part of it.
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
#include <string>
#include <vector>

#include "faults/fault_points.h"
#include "sit/sit.h"

namespace {

namespace fs = std::filesystem;
using faults::Span;

std::string sample;
std::string scratch;

// Made beforehand: while faults are armed, only the plug-in may allocate.
struct Texts {
  std::string copies = scratch + "/copies";
  std::string validation = scratch + "/validation";
  std::string netscape = sample + "/netscape";
  std::string apache = sample + "/apache";
  std::string folder = copies + std::string(SIT_PATH_BYTES, '\0');
};

struct Command {
  std::string name;
  int (*run)(const char* report, Texts& texts);
  bool ends_report = true;
  void (*prepare)(Texts& texts) = [](Texts& /*unused*/) {};
};

void find_logs(Texts& texts) {
  GetOBValidationInfo(texts.copies.c_str(), texts.validation.c_str(), "10.1B", 64, 0, "", "");
}

const std::vector<Command>& commands() {
  static const std::vector<Command> all{
      {"GetEnvironInfo", [](const char* r, Texts& /*unused*/) { return GetEnvironInfo(r, 64, 1); }},
      {"GetVersInfo", [](const char* r, Texts& /*unused*/) { return GetVersInfo(r, 64, 1, 1); }},
      {"GetSysInfo", [](const char* r, Texts& /*unused*/) { return GetSysInfo(r, 0, 64, 1); }},
      {"GetPelCFGInfo",
       [](const char* r, Texts& /*unused*/) { return GetPelCFGInfo(r, "10.1B", 64, 1, SEL_ANY); }},
      {"GetPelInstFiles",
       [](const char* r, Texts& /*unused*/) {
         return GetPelInstFiles(r, "10.1B", 64, 0, SEL_ANY);
       }},
      {"GetPelSecurityLog",
       [](const char* r, Texts& /*unused*/) {
         return GetPelSecurityLog(r, "10.1B", 64, 0, SEL_ANY);
       }},
      {"GetDelvonFiles",
       [](const char* r, Texts& t) { return GetDelvonFiles(r, t.folder.data(), "2.1A:10.1B03"); },
       false},
      {"GetOBValidationInfo",
       [](const char* r, Texts& t) {
         return GetOBValidationInfo(t.copies.c_str(), r, "10.1B", 64, 0, "", "");
       }},
      {"OBCopyFiles",
       [](const char* r, Texts& t) {
         return OBCopyFiles(r, "billing", "10.1B03", t.copies.c_str());
       },
       false, find_logs},
      {"GetNetscapeInfo",
       [](const char* r, Texts& t) { return GetNetscapeInfo(r, t.netscape.c_str(), "shop"); }},
      {"GetApacheInfo", [](const char* r, Texts& t) { return GetApacheInfo(r, t.apache.c_str()); }},
      {"RunCommand",
       [](const char* r, Texts& /*unused*/) {
         return RunCommand("echo captured", "", 0, scratch.c_str(), "copies", "out.txt", r);
       },
       false}};
  return all;
}

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

std::string report;
std::string written_before_fault;
void keep_what_is_written() { written_before_fault = content_of(report); }

bool is_stated(int code) {
  constexpr int kLastSystemError = 133;
  return (code >= SIT_FAILED && code <= kLastSystemError) ||
         (code >= SIT_NO_REPORT_PATH && code <= SIT_DATABASE_LEFT_OUT);
}

void make_copies_folder() {
  fs::remove_all(scratch + "/copies");
  fs::create_directory(scratch + "/copies");
}

// What is wrong after a run with a fault; empty when nothing is.
std::string fault_found(const Command& command, int code, const std::vector<int>& descriptors) {
  if (!is_stated(code)) return "returned " + std::to_string(code);
  if (open_descriptors() != descriptors) return "a descriptor was left open";
  if (::waitpid(-1, nullptr, WNOHANG) != -1 || errno != ECHILD) return "a child was left";
  if (!fs::is_empty(scratch + "/tmp")) return "a temporary file was left";
  if (pc != nullptr && pc->reportDir[0] != '\0') return "the report was left open";
  if (!content_of(report).starts_with(written_before_fault)) return "the report lost text";

  report = scratch + "/again";
  make_copies_folder();
  Texts texts;
  const int again = command.run(report.c_str(), texts);
  if (!is_stated(again)) return "returned " + std::to_string(again) + " afterwards";
  const std::string text = content_of(report);
  const bool is_whole =
      text.empty() || !command.ends_report || text.ends_with("\n==End of Log==\n");
  return is_whole ? "" : "wrote no whole report afterwards";
}

enum Exit { kGood, kFaulty, kNoFaultMet };

[[noreturn]] void run_once(const Command& command, const std::string& group, int n, Span span) {
  report = scratch + "/report";
  for (const char* file : {"/report", "/again", "/validation"}) fs::remove(scratch + file);
  make_copies_folder();
  Texts texts;
  const std::vector<int> descriptors = open_descriptors();
  command.prepare(texts);
  faults::arm(group, n, span, keep_what_is_written);
  const int code = command.run(report.c_str(), texts);
  if (faults::disarm() == 0) ::_exit(kNoFaultMet);
  const std::string found = fault_found(command, code, descriptors);
  if (!found.empty()) std::cerr << found << std::endl;
  ::_exit(found.empty() ? kGood : kFaulty);
}

// Whether the run met a fault and all was well; says so if not well.
Exit run_apart(const Command& command, const std::string& group, int n, Span span) {
  const pid_t child = ::fork();
  if (child == 0) run_once(command, group, n, span);
  int status = 0;
  ::waitpid(child, &status, 0);
  if (WIFEXITED(status) && WEXITSTATUS(status) != kFaulty) {
    return static_cast<Exit>(WEXITSTATUS(status));
  }
  std::cerr << "status " << status << "; to repeat: fault_loop " << command.name << " " << sample
            << " " << group << " " << n << (span == Span::kOnce ? " once" : " on") << std::endl;
  return kFaulty;
}

// Returns the number of faults met, or 0 when something was wrong.
int run_all(const Command& command) {
  int met = 0;
  bool all_well = true;
  for (const std::string& group : faults::groups()) {
    for (const Span span : {Span::kOnce, Span::kFromThereOn}) {
      for (int n = 1;; ++n, ++met) {
        const Exit exit = run_apart(command, group, n, span);
        if (exit == kNoFaultMet) break;
        all_well = all_well && exit == kGood;
      }
    }
  }
  std::cout << command.name << ": " << met << " runs, each with a fault\n";
  return all_well ? met : 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 && argc != 6) return 2;
  const auto command = std::ranges::find(commands(), std::string(argv[1]), &Command::name);
  if (command == commands().end()) return 2;
  sample = argv[2];
  std::string name = (fs::temp_directory_path() / "sit-faults-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) return 2;
  scratch = name;
  fs::create_directory(scratch + "/tmp");
  fs::create_directory(scratch + "/bin");
  ::setenv("TMPDIR", (scratch + "/tmp").c_str(), 1);
  // What takes long and says nothing about the plug-in.
  for (const char* tool : {"openssl", "ps", "netstat", "sysctl"}) {
    const std::string path = scratch + "/bin/" + tool;
    std::ofstream(path) << "#!/bin/sh\necho " << tool << "\n";
    fs::permissions(path, fs::perms::owner_all);
  }
  ::setenv("PATH", (scratch + "/bin:" + std::getenv("PATH")).c_str(), 1);
  ::setenv("PHM", (sample + "/pel").c_str(), 1);
  ::setenv("DELVONINIT", (sample + "/delvon/delvon.ini").c_str(), 1);
  bool all_well = false;
  if (argc == 3) {
    all_well = run_all(*command) > 0;
  } else {
    const Span span = std::string(argv[5]) == "once" ? Span::kOnce : Span::kFromThereOn;
    all_well = run_apart(*command, argv[3], static_cast<int>(std::strtol(argv[4], nullptr, 10)),
                         span) != kFaulty;
  }
  fs::remove_all(scratch);
  return all_well ? 0 : 1;
}
