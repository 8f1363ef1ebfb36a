// Sees to it that no command of a collection runs longer than it may, or outlives the collection.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "result/row.h"
#include "run/clock.h"
#include "support/processes.h"

namespace host {

class CommandWatch {
 public:
  // Whatever runs below the host already is not its own and is left alone.
  explicit CommandWatch(double limit);

  // The commands of this row may take no longer than this either.
  void limit_row(const std::string& row, double limit) { row_limits_[row] = limit; }

  // A command that a worker waits for, and how long it may take.
  struct Running {
    std::string command_line;
    double seconds;
    double limit;
  };

  // Takes note of all processes below the host, parents first. `rows` tells by the worker's number
  // what row its commands are for. Ends what is too old and returns those it has begun to end;
  // where it was for their age, with a word in `end`, and their limit as what they took.
  std::vector<EndedCommand> look(std::vector<Process> processes,
                                 const std::map<pid_t, std::string>& rows);

  // Whatever this worker has started is to end, for the worker has.
  void end_commands_of(pid_t worker);

  // The same for all that is there.
  void end_all() { ending_all_ = true; }

  // What the processes that will not end are in, once nothing more can be done.
  void give_up();

  [[nodiscard]] bool is_idle() const { return commands_.empty(); }

  // The command that the worker waits for at the moment.
  [[nodiscard]] std::optional<Running> of_worker(pid_t worker) const;

  // Whether this process ends because it has been told to.
  [[nodiscard]] bool is_asked_to_end(pid_t pid) const;

  // Those that had to be ended, in the order of their end.
  [[nodiscard]] const std::vector<EndedCommand>& ended() const { return ended_; }

 private:
  // A process that a worker has started, or that has come to the host, with all below it.
  struct Command {
    Process root;
    std::string row;
    pid_t worker = 0;
    std::string command_line = {};
    std::string program = {};
    std::vector<Process> members = {};
    std::string circumstance = {};  // of its end
    bool is_left_over = false;
    bool is_unwanted = false;
    std::optional<Clock::time_point> asked = {};  // to end
    bool is_killed = false;
    bool is_forbidden = false;
    double seconds = 0;
  };
  using Key = std::pair<pid_t, std::uint64_t>;

  [[nodiscard]] static Key key_of(const Process& process) { return {process.pid, process.start}; }
  void forget_strangers(std::vector<Process>& processes);
  void sort_in(const std::vector<Process>& processes, const std::map<pid_t, std::string>& rows);
  [[nodiscard]] Key root_of(const Process& process, const Key* of_parent) const;
  [[nodiscard]] static Command begun(const Process& root, const std::map<pid_t, std::string>& rows);
  [[nodiscard]] double limit_of(const Command& command) const;
  static void read_command_line(Command& command);
  void ask(Command& command, bool is_too_old);
  void insist(Command& command);
  static void send(Command& command, int signal);
  void note_end(const Command& command);

  double limit_;
  std::map<std::string, double> row_limits_;
  bool ending_all_ = false;
  std::map<Key, Command> commands_;  // by their root
  std::map<Key, Key> command_of_;    // every process of theirs that lives
  std::set<Key> strangers_;
  // Programs that have reached the limit once, and whether they ignore being asked to end.
  std::map<std::string, bool> offenders_;
  std::vector<EndedCommand> ended_;
};

}  // namespace host
