#include "support/processes.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <map>
#include <memory>
#include <sstream>

#include "support/descriptor.h"

namespace host {
namespace {

// A file under /proc, or as much of it as one read gives.
std::string read_proc(pid_t pid, const std::string& name) {
  const std::string path = "/proc/" + std::to_string(pid) + "/" + name;
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  std::array<char, 8192> text;
  const ssize_t got = file.is_open() ? ::read(file.get(), text.data(), text.size()) : -1;
  return got > 0 ? std::string(text.data(), static_cast<std::size_t>(got)) : std::string();
}

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};

std::vector<pid_t> numbers_in(const std::string& directory) {
  std::vector<pid_t> numbers;
  const std::unique_ptr<DIR, CloseDirectory> open{::opendir(directory.c_str())};
  while (open != nullptr) {
    const dirent* entry = ::readdir(open.get());
    if (entry == nullptr) break;
    const std::string_view name = entry->d_name;
    pid_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (error == std::errc{} && end == name.data() + name.size()) numbers.push_back(number);
  }
  return numbers;
}

// Not every kernel keeps lists of children.
bool lists_children() {
  static const bool lists =
      ::access(("/proc/self/task/" + std::to_string(::getpid()) + "/children").c_str(), R_OK) == 0;
  return lists;
}

std::vector<pid_t> children_of(pid_t parent) {
  std::vector<pid_t> children;
  for (const pid_t thread : numbers_in("/proc/" + std::to_string(parent) + "/task")) {
    std::istringstream list(read_proc(parent, "task/" + std::to_string(thread) + "/children"));
    for (pid_t child = 0; list >> child;) children.push_back(child);
  }
  return children;
}

std::multimap<pid_t, pid_t> all_by_parent() {
  std::multimap<pid_t, pid_t> by_parent;
  for (const Process& process : all_processes()) by_parent.emplace(process.parent, process.pid);
  return by_parent;
}

bool has_threads(pid_t pid) {
  return numbers_in("/proc/" + std::to_string(pid) + "/task").size() > 1;
}

// One whose first thread has ended may live on in others.
bool has_ended(const Process& process) {
  return process.state == 'X' || (process.state == 'Z' && !has_threads(process.pid));
}

bool is_among(std::string_view word, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

bool is_shell(std::string_view word) {
  return is_among(word.substr(word.rfind('/') + 1), {"sh", "bash", "dash", "ksh", "zsh"});
}

// Neither the program itself nor anything that it would be known by.
bool says_nothing(std::string_view word) {
  const bool is_setting = word.find('=') != std::string::npos && word[0] != '/';
  const bool is_number = word.find_first_not_of("0123456789.smh") == std::string_view::npos;
  return is_shell(word) || word[0] == '-' || is_setting || is_number ||
         is_among(word, {"env", "exec", "nice", "ionice", "nohup", "setsid", "stdbuf", "sudo",
                         "time", "timeout"});
}

// Takes the next word off the command line, without its quotes.
std::string take_word(std::string_view& rest) {
  constexpr std::string_view kBetween = " \t\n;&|(";
  rest.remove_prefix(std::min(rest.find_first_not_of(kBetween), rest.size()));
  std::string word;
  char quote = 0;
  while (!rest.empty() && (quote != 0 || kBetween.find(rest[0]) == std::string_view::npos)) {
    const char c = rest[0];
    rest.remove_prefix(1);
    if (quote == 0 && (c == '"' || c == '\'')) {
      quote = c;
    } else if (c == quote) {
      quote = 0;
    } else if (c != '\\') {
      word += c;
    }
  }
  return word;
}

}  // namespace

bool has_proc() {
  static const bool is_ours = [] {
    std::array<char, 16> number{};
    const ssize_t size = ::readlink("/proc/self", number.data(), number.size() - 1);
    return size > 0 && std::string(number.data()) == std::to_string(::getpid());
  }();
  return is_ours;
}

std::optional<Process> read_process(pid_t pid) {
  const std::string stat = read_proc(pid, "stat");
  const std::size_t name_end = stat.rfind(')');  // the name before it may hold anything
  if (name_end == std::string::npos) return std::nullopt;
  std::istringstream fields(stat.substr(name_end + 1));
  Process process{.pid = pid};
  std::string skipped;
  fields >> process.state >> process.parent >> skipped >> process.session;
  constexpr int kBeforeStart = 15;
  for (int i = 0; i < kBeforeStart; ++i) fields >> skipped;
  fields >> process.start;
  return fields ? std::optional(process) : std::nullopt;
}

std::vector<Process> descendants(pid_t root) {
  if (!has_proc()) return {};
  std::multimap<pid_t, pid_t> by_parent;
  if (!lists_children()) by_parent = all_by_parent();
  std::vector<Process> found;
  std::vector<pid_t> parents{root};
  for (std::size_t i = 0; i < parents.size(); ++i) {
    std::vector<pid_t> children;
    if (lists_children()) {
      children = children_of(parents[i]);
    } else {
      const auto [first, last] = by_parent.equal_range(parents[i]);
      for (auto child = first; child != last; ++child) children.push_back(child->second);
    }
    for (const pid_t child : children) {
      const auto process = read_process(child);
      if (!process || has_ended(*process)) continue;
      found.push_back(*process);
      parents.push_back(child);
    }
  }
  return found;
}

double age_in_seconds(const Process& process) {
  timespec now{};
  ::clock_gettime(CLOCK_BOOTTIME, &now);
  constexpr double kNanosecond = 1e-9;
  static const auto ticks = static_cast<double>(::sysconf(_SC_CLK_TCK));
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * kNanosecond -
         static_cast<double>(process.start) / ticks;
}

std::string command_line_of(pid_t pid) {
  const std::string arguments = read_proc(pid, "cmdline");
  static const std::string own = read_proc(::getpid(), "cmdline");
  if (arguments.empty() || arguments == own) {
    std::string name = read_proc(pid, "comm");
    return "[" + name.substr(0, name.find('\n')) + "]";
  }
  std::vector<std::string> words;
  std::istringstream list(arguments);
  for (std::string word; std::getline(list, word, '\0');) words.push_back(word);
  if (words.size() > 2 && is_shell(words[0]) && words[1] == "-c") return words[2];
  std::string line;
  for (const std::string& word : words) line += (line.empty() ? "" : " ") + word;
  return line;
}

std::string program_of(std::string_view command_line) {
  std::string first;
  for (std::string word = take_word(command_line); !word.empty(); word = take_word(command_line)) {
    if (first.empty()) first = word;
    if (says_nothing(word)) continue;
    if (!is_among(word, {".", "cd", "export"})) return word;
    static_cast<void>(take_word(command_line));  // what is read, entered or set
  }
  return first;
}

bool send_signal(const Process& process, int signal) {
  const Descriptor held(static_cast<int>(::syscall(SYS_pidfd_open, process.pid, 0)));
  const auto now = read_process(process.pid);
  if (!now || *now != process) return true;
  const long sent = held.is_open()
                        ? ::syscall(SYS_pidfd_send_signal, held.get(), signal, nullptr, 0)
                        : ::kill(process.pid, signal);
  return sent == 0 || errno == ESRCH;
}

std::vector<Process> all_processes() {
  std::vector<Process> found;
  for (const pid_t pid : numbers_in("/proc")) {
    if (const auto process = read_process(pid)) found.push_back(*process);
  }
  return found;
}

}  // namespace host
