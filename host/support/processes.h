// Processes as the system tells of them.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace host {

struct Process {
  pid_t pid = 0;
  pid_t parent = 0;
  pid_t session = 0;
  char state = '?';
  std::uint64_t start = 0;  // in clock ticks since the machine started

  // A number may be given again; a number and a start together are not.
  bool operator==(const Process& other) const { return pid == other.pid && start == other.start; }
};

// Whether /proc tells of this process and those it can see.
[[nodiscard]] bool has_proc();

[[nodiscard]] std::optional<Process> read_process(pid_t pid);

// All processes below this one, parents before their children, without those that have ended.
[[nodiscard]] std::vector<Process> descendants(pid_t root);

[[nodiscard]] double age_in_seconds(const Process& process);

// Its command line: that of the shell command where it is a shell's. In brackets its name where it
// has none of its own: a process that a worker has made of itself, say.
[[nodiscard]] std::string command_line_of(pid_t pid);

// The program that a command line is about: its first word that is neither a shell, a setting nor
// a program that only runs another one.
[[nodiscard]] std::string program_of(std::string_view command_line);

// Sends the signal to this process and to no other that has got its number since. False when the
// process may not be signalled.
bool send_signal(const Process& process, int signal);

// Every process on the machine.
[[nodiscard]] std::vector<Process> all_processes();

}  // namespace host
