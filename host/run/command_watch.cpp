#include "run/command_watch.h"

#include <unistd.h>

#include <algorithm>
#include <csignal>

#include "support/text.h"

namespace host {
namespace {

constexpr double kPatience = 2;  // seconds between asking a command to end and ending it
constexpr double kTenth = 0.1;

}  // namespace

CommandWatch::CommandWatch(double limit) : limit_(limit) {
  for (const Process& process : descendants(::getpid())) strangers_.insert(key_of(process));
}

std::vector<EndedCommand> CommandWatch::look(std::vector<Process> processes,
                                             const std::map<pid_t, std::string>& rows) {
  if (!strangers_.empty()) forget_strangers(processes);
  sort_in(processes, rows);
  std::erase_if(commands_, [this](const auto& entry) {
    const Command& command = entry.second;
    if (command.members.empty() && command.asked) note_end(command);
    return command.members.empty();
  });
  std::vector<EndedCommand> begun;
  for (auto& [root, command] : commands_) {
    command.seconds = age_in_seconds(command.root);
    const double limit = limit_of(command);
    const bool is_too_old = command.seconds > limit;
    if (command.asked) {
      insist(command);
    } else if (is_too_old || command.is_unwanted || ending_all_) {
      ask(command, is_too_old);
      begun.push_back({command.command_line, command.root.pid, std::min(command.seconds, limit),
                       is_too_old && !command.is_left_over ? "past its limit" : "", command.row});
    }
  }
  return begun;
}

// Takes those out, and what they have started since.
void CommandWatch::forget_strangers(std::vector<Process>& processes) {
  std::set<Key> living;
  std::set<pid_t> numbers;
  std::erase_if(processes, [&](const Process& process) {
    if (!strangers_.contains(key_of(process)) && !numbers.contains(process.parent)) return false;
    living.insert(key_of(process));
    numbers.insert(process.pid);
    return true;
  });
  strangers_ = std::move(living);
}

void CommandWatch::sort_in(const std::vector<Process>& processes,
                           const std::map<pid_t, std::string>& rows) {
  for (auto& [key, command] : commands_) command.members.clear();
  std::map<Key, Key> living;
  std::map<pid_t, Key> by_number;
  std::set<Key> has_root;
  for (const Process& process : processes) {
    if (rows.contains(process.pid)) continue;  // a worker itself
    const auto parent = by_number.find(process.parent);
    const bool has_parent = parent != by_number.end();
    const Key root = root_of(process, has_parent ? &parent->second : nullptr);
    const auto found = commands_.try_emplace(root, begun(process, rows)).first;
    Command& command = found->second;
    if (process == command.root) has_root.insert(root);
    command.members.push_back(process);
    living[key_of(process)] = root;
    by_number[process.pid] = root;
  }
  command_of_ = std::move(living);
  // What is left when the process has ended that a worker waits for.
  for (auto& [key, command] : commands_) {
    command.is_left_over = !has_root.contains(key) || !rows.contains(command.worker);
  }
}

CommandWatch::Key CommandWatch::root_of(const Process& process, const Key* of_parent) const {
  const Key key = key_of(process);
  const auto known = command_of_.find(key);
  if (known != command_of_.end()) return known->second;
  if (of_parent != nullptr) return *of_parent;
  // One that a command has started while it was being ended comes to the host, too.
  if (process.parent != ::getpid()) return key;
  for (const auto& [root, command] : commands_) {
    if (command.asked && command.root.session == process.session) return root;
  }
  return key;
}

CommandWatch::Command CommandWatch::begun(const Process& root,
                                          const std::map<pid_t, std::string>& rows) {
  // One that has come to the host without having been seen before may still be in the session of
  // its worker.
  const auto row = rows.find(rows.contains(root.parent) ? root.parent : root.session);
  return {.root = root, .row = row == rows.end() ? "" : row->second, .worker = root.parent};
}

double CommandWatch::limit_of(const Command& command) const {
  const auto own = row_limits_.find(command.row);
  const double limit = own == row_limits_.end() ? limit_ : std::min(limit_, own->second);
  if (offenders_.empty()) return limit;
  const std::string line = command_line_of(command.root.pid);
  return offenders_.contains(program_of(line)) ? limit * kTenth : limit;
}

void CommandWatch::end_commands_of(pid_t worker) {
  for (auto& [key, command] : commands_) {
    if (command.worker == worker) command.is_unwanted = true;
  }
}

void CommandWatch::read_command_line(Command& command) {
  if (!command.command_line.empty()) return;
  for (const Process& member : command.members) {
    command.command_line = command_line_of(member.pid);
    if (!command.command_line.empty()) break;
  }
  command.program = program_of(command.command_line);
}

void CommandWatch::ask(Command& command, bool is_too_old) {
  read_command_line(command);
  command.asked = Clock::now();
  if (!is_too_old || command.is_left_over) {
    command.circumstance = command.is_unwanted ? "given up with its row; " : "left over; ";
  }
  const auto offender = offenders_.find(command.program);
  // There is no use in asking one again that did not listen.
  command.is_killed = offender != offenders_.end() && offender->second;
  if (is_too_old && !command.is_left_over) offenders_.try_emplace(command.program, false);
  send(command, command.is_killed ? SIGKILL : SIGTERM);
}

void CommandWatch::insist(Command& command) {
  if (!command.is_killed && seconds_since(*command.asked) < kPatience) return;
  if (!command.is_killed) offenders_[command.program] = true;
  command.is_killed = true;
  send(command, SIGKILL);
}

void CommandWatch::send(Command& command, int signal) {
  for (const Process& member : command.members) {
    command.is_forbidden = !send_signal(member, signal) || command.is_forbidden;
    // One that is stopped would not notice.
    if (signal == SIGTERM) send_signal(member, SIGCONT);
  }
}

void CommandWatch::note_end(const Command& command) {
  ended_.push_back({command.command_line, command.root.pid, command.seconds,
                    command.circumstance + (command.is_killed ? "killed" : "ended by SIGTERM"),
                    command.row});
}

void CommandWatch::give_up() {
  for (auto& [key, command] : commands_) {
    read_command_line(command);
    const std::string state{command.members.empty() ? '?' : command.members.front().state};
    ended_.push_back({command.command_line, command.root.pid, command.seconds,
                      command.is_forbidden ? "still running: it may not be signalled"
                                           : "still running, in state " + state,
                      command.row});
  }
}

bool CommandWatch::is_asked_to_end(pid_t pid) const {
  return std::any_of(commands_.begin(), commands_.end(), [pid](const auto& entry) {
    return entry.second.root.pid == pid && entry.second.asked;
  });
}

std::optional<CommandWatch::Running> CommandWatch::of_worker(pid_t worker) const {
  for (const auto& [key, command] : commands_) {
    // One that does not end though it has been told to is not what the worker waits for.
    const bool is_undying = command.asked && seconds_since(*command.asked) > 2 * kPatience;
    if (command.worker != worker || command.is_left_over || is_undying) continue;
    return Running{command_line_of(command.root.pid), age_in_seconds(command.root),
                   limit_of(command)};
  }
  return std::nullopt;
}

}  // namespace host
