// Running commands: their outcomes, and what they and their host see of each other.
#include <fcntl.h>
#include <sched.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <csignal>
#include <regex>

#include "support/sit_test.h"

namespace test {
namespace {

class Command : public SitTest {
 protected:
  int execute(const std::string& command) {
    fs::remove(path("out"));
    const auto start = std::chrono::steady_clock::now();
    const int result = execcmd(command.c_str(), path("out").c_str());
    seconds_ = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return result;
  }
  [[nodiscard]] std::string output() const { return read_file(path("out")); }

  double seconds_ = 0;
};

TEST_F(Command, ResultForEachEnd) {
  const std::pair<const char*, int> ends[] = {{"true", 0},
                                              {"exit 1", -1},
                                              {"sleep 0.1; exit 2", 512},
                                              {"exit 254", 65024},
                                              {"exit 255", 65280},
                                              {"kill -9 $$", 9},
                                              {"kill -TERM $$", 15},
                                              {"ulimit -c 0; kill -SEGV $$", 11},
                                              {"/nosuch/tool", 127 * 256},
                                              {"-x || exit 3", 768},
                                              {"+x || exit 3", 768}};
  interrupt_every(10000);
  for (const auto& [command, result] : ends) {
    EXPECT_EQ(execute(command), result) << command;
    EXPECT_LT(seconds_, 0.9) << command << " costs more than it takes";
  }
  EXPECT_EQ(execcmd("true", path("missing/out").c_str()), 65280);
  ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
  EXPECT_EQ(execcmd("true", path("fifo").c_str()), 65280) << "nobody reads it";
  EXPECT_EQ(execcmd(nullptr, path("out").c_str()), SIT_FAILED);
}

TEST_F(Command, SeesNothingOfTheHost) {
  // A command that read the host's terminal would wait for ever; this pipe stands for one.
  std::array<int, 2> terminal{};
  ASSERT_EQ(::pipe2(terminal.data(), O_CLOEXEC), 0);
  const int own_input = ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 100);
  ASSERT_EQ(::dup2(terminal[0], STDIN_FILENO), STDIN_FILENO);
  std::signal(SIGPIPE, SIG_IGN);
  for (const int signal : {SIGINT, SIGQUIT}) std::signal(signal, SIG_DFL);  // a shell's background
  sigset_t all;
  sigfillset(&all);
  ASSERT_EQ(::sigprocmask(SIG_BLOCK, &all, nullptr), 0);
  const int leaky = ::open("/dev/null", O_RDONLY);  // 3, unless the report is
  const int high = ::fcntl(leaky, F_DUPFD, 200);
  ASSERT_EQ(LogOpen(path("report").c_str(), SIT_CREATE), 0);
  EXPECT_EQ(execute("exec ls -l /proc/self/fd"), 0);
  const std::string descriptors = output();
  EXPECT_EQ(execute("cat; exec grep -E 'SigBlk|SigIgn' /proc/self/status"), 0);
  LogClose(0);
  ::close(leaky);
  ::close(high);
  ::dup2(own_input, STDIN_FILENO);
  for (const int fd : {terminal[0], terminal[1], own_input}) ::close(fd);
  static const std::regex line("([0-9]+) -> (.*)\n");
  std::string seen;
  for (std::sregex_iterator it(descriptors.begin(), descriptors.end(), line), end; it != end;
       ++it) {
    seen += it->str(1) + (it->str(1) == "3" ? "" : " " + it->str(2)) + "\n";
  }
  EXPECT_EQ(seen, "0 /dev/null\n1 " + path("out") + "\n2 " + path("out") + "\n3\n")
      << "3 is the folder that ls itself reads";
  EXPECT_EQ(output(), "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
}

TEST_F(Command, HostWithoutStandardDescriptors) {
  const auto host = [this] {
    for (int fd = 0; fd < 3; ++fd) ::close(fd);
    return execcmd("echo out; echo err >&2", path("out").c_str()) == 0 ? 0 : 1;
  };
  EXPECT_EQ(in_child(host), 0);
  EXPECT_EQ(output(), "out\nerr\n");
}

TEST_F(Command, VerboseLines) {
  SetVerboseMode(1);
  const std::string text =
      without_pids(written_by([this] { execcmd("true", path("missing/out").c_str()); }));
  // The parent's first look may come before or after what the child says.
  const std::string refused =
      "VERBOSE: execcmd: Cannot open output file " + path("missing/out") + " for fork\n";
  EXPECT_THAT(text, HasSubstr(refused));
  EXPECT_THAT(
      text, EndsWith("VERBOSE: pid P, ret P, status 65280\n"
                     "VERBOSE: execcmd: process completed, status is 65280 (FAIL_STATUS is 256\n"));
}

// Somebody keeps sending a signal to the whole process group, which the host handles.
TEST_F(Command, NoHandlerOfTheHostRunsInAChild) {
  static pid_t host;
  static volatile sig_atomic_t elsewhere;
  host = ::getpid();
  elsewhere = 0;
  ASSERT_EQ(::setpgid(0, 0), 0);
  std::signal(SIGUSR1, [](int) {
    if (::getpid() == host) return;
    elsewhere = 1;
    ::_exit(77);
  });
  const pid_t sender = ::fork();
  if (sender == 0) {
    std::signal(SIGUSR1, SIG_IGN);
    while (::getppid() == host) ::kill(-host, SIGUSR1);
    ::_exit(0);
  }
  for (int i = 0; i < 300; ++i) EXPECT_NE(execute("exit 2"), 77 * 256);
  ::kill(sender, SIGKILL);
  ::waitpid(sender, nullptr, 0);
  EXPECT_EQ(elsewhere, 0);
}

TEST_F(Command, HungCommandIsAbandonedAfterSixtySeconds) {
  interrupt_every(10000);
  SetVerboseMode(1);
  const std::string text =
      written_by([this] { EXPECT_EQ(execute("echo begun; exec sleep 300"), -1); });
  interrupt_every(0);
  EXPECT_GE(seconds_, 60.0);
  EXPECT_LT(seconds_, 61.0);
  EXPECT_EQ(without_pids(text),
            "VERBOSE: \n**Verbose Mode **\n" + repeat("VERBOSE: pid P, ret 0, status 0\n", 60) +
                "VERBOSE: execcmd: timeout of 60 seconds exceeded, suspect process P is hung\n");
  EXPECT_EQ(output(), "begun\n");
  const pid_t child = std::stoi(text.substr(text.find("pid ") + 4));
  EXPECT_EQ(::waitpid(child, nullptr, WNOHANG), 0) << "the command must go on";
  ::kill(child, SIGKILL);
  EXPECT_EQ(::waitpid(child, nullptr, 0), child);
}

TEST_F(Command, StoppedHostDoesNotTakeItsCommandForHung) {
  const pid_t host = ::fork();
  if (host == 0) ::_exit(execute("sleep 63; exit 3") == 3 * 256 ? 0 : 1);
  ::usleep(500000);
  ::kill(host, SIGSTOP);
  ::usleep(61000000);
  ::kill(host, SIGCONT);
  int status = -1;
  ::waitpid(host, &status, 0);
  EXPECT_EQ(status, 0);
}

// Nor one that lets a child borrow its parent's memory, or closes many descriptors at once.
TEST_F(Command, KernelWithoutPidfd) {
  for (const int call : {SYS_pidfd_open, SYS_close_range}) refuse(call, ENOSYS);
  refuse(SYS_clone, ENOSYS, CLONE_VFORK);
  interrupt_every(10000);
  const int leaky = ::open("/dev/null", O_RDONLY);
  EXPECT_EQ(execute("sleep 1.2; test -e /proc/$$/fd/" + std::to_string(leaky) + " || exit 7"),
            7 * 256);
  ::close(leaky);
  EXPECT_LT(seconds_, 1.4);
  EXPECT_EQ(execute("true"), 0);
  EXPECT_LT(seconds_, 0.1);
}

TEST_F(Command, MachineWithoutRoomForAProcess) {
  // Only a child is so poor: what looks for leaks at the end of a test needs a process.
  const auto host = [this] {
    refuse(SYS_clone, EAGAIN);
    return static_cast<int>(
        written_by([] { LogCmdOutput("true", nullptr); }) !=
        "Error forking true, returned -1\nFailed to capture output from true\n");
  };
  EXPECT_EQ(in_child(host), 0);
}

}  // namespace
}  // namespace test
