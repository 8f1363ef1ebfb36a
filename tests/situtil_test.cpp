#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <filesystem>
#include <regex>
#include <tuple>

#include "support/sit_test.h"

namespace {

using test::read_file;
using test::repeat;
using test::set_environment;
using test::write_file;

class Command : public test::SitTest {
 protected:
  int execute(const std::string& command) {
    std::filesystem::remove(path("out"));
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
                                              {"exit 2", 512},
                                              {"exit 254", 65024},
                                              {"exit 255", 65280},
                                              {"kill -9 $$", 9},
                                              {"kill -TERM $$", 15},
                                              {"ulimit -c 0; kill -SEGV $$", 11},
                                              {"/nosuch/tool", 127 * 256},
                                              {"-x || exit 3", 768},
                                              {"+x || exit 3", 768}};
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
  sigset_t all;
  sigfillset(&all);
  ASSERT_EQ(::sigprocmask(SIG_BLOCK, &all, nullptr), 0);
  const int leaky = ::open("/dev/null", O_RDONLY);
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
  const pid_t host = ::fork();
  if (host == 0) {
    for (int fd = 0; fd < 3; ++fd) ::close(fd);
    ::_exit(execcmd("echo out; echo err >&2", path("out").c_str()) == 0 ? 0 : 1);
  }
  int status = -1;
  ::waitpid(host, &status, 0);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(output(), "out\nerr\n");
}

TEST_F(Command, VerboseLines) {
  SetVerboseMode(1);
  const std::string running = "VERBOSE: pid P, ret 0, status 0\n";
  const std::string text = test::without_pids(written_by([this] {
    execute("sleep 0.2; exit 3");
    execcmd("true", path("missing/out").c_str());
  }));
  const auto line = [&](const std::string& status) {
    return "VERBOSE: pid P, ret P, status " + status +
           "\nVERBOSE: execcmd: process completed, status is " + status + " (FAIL_STATUS is 256\n";
  };
  const std::string refused =
      "VERBOSE: execcmd: Cannot open output file " + path("missing/out") + " for fork\n";
  const std::string start = "VERBOSE: \n**Verbose Mode **\n" + running + line("768");
  // The parent's first look may come before, after or between what the child does.
  const std::string end = line("65280");
  EXPECT_TRUE(text == start + running + refused + end || text == start + refused + running + end ||
              text == start + refused + end)
      << text;
}

TEST_F(Command, HostThatReapsEveryChild) {
  for (const auto handler : {SIG_IGN, sighandler_t([](int) {
                               while (::waitpid(-1, nullptr, WNOHANG) > 0) continue;
                             })}) {
    std::signal(SIGCHLD, handler);
    EXPECT_EQ(written_by([this] {
                EXPECT_EQ(execute("sleep 0.1"), SIT_FAILED);
                EXPECT_EQ(execute("true"), SIT_FAILED);
              }),
              "WARNING: The host took the results of the commands (SIGCHLD), which therefore count "
              "as failed.\n");
    EXPECT_LT(seconds_, 0.9);
    EXPECT_EQ(std::signal(SIGCHLD, SIG_DFL), handler);
  }
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
  for (int i = 0; i < 300; ++i) {
    EXPECT_NE(execute("exit 2"), 77 * 256);
  }
  ::kill(sender, SIGKILL);
  ::waitpid(sender, nullptr, 0);
  EXPECT_EQ(elsewhere, 0);
}

// Calls the host's timer a hundred times a second.
void interrupt_often() {
  std::signal(SIGALRM, [](int) {});
  const itimerval often{{0, 10000}, {0, 10000}};
  ASSERT_EQ(::setitimer(ITIMER_REAL, &often, nullptr), 0);
}

TEST_F(Command, HungCommandIsAbandonedAfterSixtySeconds) {
  interrupt_often();
  SetVerboseMode(1);
  const std::string text =
      written_by([this] { EXPECT_EQ(execute("echo begun; exec sleep 300"), -1); });
  EXPECT_GE(seconds_, 60.0);
  EXPECT_LT(seconds_, 61.0);
  EXPECT_EQ(test::without_pids(text),
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
  constexpr unsigned kRefused = SECCOMP_RET_ERRNO | ENOSYS;
  sock_filter refuse[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                          BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_pidfd_open, 4, 0),
                          BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_close_range, 3, 0),
                          BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_clone, 0, 3),
                          BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args)),
                          BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, CLONE_VFORK, 0, 1),
                          BPF_STMT(BPF_RET | BPF_K, kRefused),
                          BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
  const sock_fprog program{std::size(refuse), refuse};
  ASSERT_EQ(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), 0);
  ASSERT_EQ(::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program), 0);
  interrupt_often();
  const int leaky = ::open("/dev/null", O_RDONLY);
  EXPECT_EQ(execute("sleep 1.2; test -e /proc/$$/fd/" + std::to_string(leaky) + " || exit 7"),
            7 * 256);
  ::close(leaky);
  EXPECT_LT(seconds_, 1.4);
  EXPECT_EQ(execute("true"), 0);
  EXPECT_LT(seconds_, 0.1);
}

TEST_F(Command, HundredsOfChildren) {
  for (int i = 0; i < 300; ++i)
    ASSERT_EQ(execute("exit " + std::to_string(i % 7 + 2)), (i % 7 + 2) * 256);
}

class Capture : public test::SitTest {};

TEST_F(Capture, OutputStandsInTheReportWhateverTheStatus) {
  EXPECT_EQ(written_by([] {
              LogCmdOutput("echo out; echo err >&2; exit 1", nullptr);
              LogCmdOutput("true", nullptr);
              ::umask(0);
              LogCmdOutput("stat -c %a \"$TMPDIR\"/sit*", nullptr);
              LogCmdOutput("printf 'a\\0%%d\\377'", nullptr);
            }),
            std::string("out\nerr\n600\na\0%d\377", 17));
  EXPECT_EQ(written_by([this] { LogCmdOutput("echo kept", path("kept").c_str()); }), "");
  EXPECT_EQ(read_file(path("kept")), "kept\n");
}

TEST_F(Capture, WithoutTemporaryFolder) {
  SIT_Initiate();
  set_environment("TMPDIR", "/proc");
  EXPECT_EQ(written_by([] { LogCmdOutput("echo beside the report", nullptr); }),
            "beside the report\n");
  ASSERT_EQ(LogOpen("/dev/full", SIT_APPEND), 0);
  ::strcpy(pc->reportDir, "/proc/");
  EXPECT_EQ(GetTempFile(), nullptr);
  LogClose(0);
  EXPECT_EQ(GetTempFile(), nullptr) << "no report is open";
}

TEST_F(Capture, TemporaryNames) {
  for (const std::string& folder : {temporary(), std::string("/nosuch"), std::string()}) {
    set_environment("TMPDIR", folder.c_str());
    char* name = GetTempFile();
    ASSERT_NE(name, nullptr);
    const std::string expected = folder == temporary() ? temporary() + "/sit" : "/tmp/sit";
    EXPECT_TRUE(std::string(name).starts_with(expected)) << name;
    EXPECT_FALSE(std::filesystem::exists(name));
    std::free(name);
  }
}

TEST_F(Capture, TextFilesOfEveryLineLength) {
  std::string content;
  for (const std::size_t length :
       {0UL, 1UL, 253UL, 254UL, 255UL, 256UL, 508UL, 600UL, 5000UL, 8191UL, 8192UL, 8193UL}) {
    content += std::string(length, 'x') + "\n";
  }
  for (const std::string& end : {std::string(), std::string(254, 'y'), std::string(9000, 'z')}) {
    write_file(path("text"), content + end);
    EXPECT_EQ(written_by([this] { EXPECT_EQ(ReadTextFile(path("text").c_str()), 0); }),
              content + end);
  }
}

TEST_F(Capture, FilesThatCannotBeRead) {
  ::mkfifo(path("fifo").c_str(), 0600);
  EXPECT_EQ(written_by([this] {
              EXPECT_EQ(ReadTextFile(path("missing").c_str()), ENOENT);
              EXPECT_EQ(ReadTextFile(path("").c_str()), 0);
              EXPECT_EQ(ReadTextFile(path("fifo").c_str()), 0);
              EXPECT_EQ(ReadTextFile(nullptr), ENOENT);
            }),
            "");
  const std::string endless = "/proc/self/pagemap";
  const std::string text = written_by([&] { EXPECT_EQ(ReadTextFile(endless.c_str()), 0); });
  EXPECT_EQ(text.size() - text.rfind('\0') - 1 + (16U << 20U), text.size());
  EXPECT_TRUE(
      text.ends_with("\nWARNING: Only the first 16777216 bytes of " + endless + " were read.\n"));
  EXPECT_EQ(FileExists(path("missing").c_str()), 0U);
  EXPECT_EQ(FileExists(path("").c_str()) & 0x4000U, 0x4000U);
}

// The holder gives the lease up a while after the kernel asks for it.
TEST_F(Capture, FileUnderALease) {
  static int holder;
  const auto handle = [](int signal, void (*handler)(int)) {
    struct sigaction action {};
    action.sa_handler = handler;
    ASSERT_EQ(::sigaction(signal, &action, nullptr), 0);
  };
  handle(SIGIO, [](int) {
    const itimerval soon{{0, 0}, {0, 100000}};
    ::setitimer(ITIMER_REAL, &soon, nullptr);
  });
  handle(SIGALRM, [](int) { ::fcntl(holder, F_SETLEASE, F_UNLCK); });
  write_file(path("leased"), "text\n");
  holder = ::open(path("leased").c_str(), O_RDWR | O_CLOEXEC);
  const auto lease = [] { return ::fcntl(holder, F_SETLEASE, F_WRLCK) == 0; };
  ASSERT_TRUE(lease());
  EXPECT_EQ(written_by([this] { EXPECT_EQ(ReadTextFile(path("leased").c_str()), 0); }), "text\n");
  ASSERT_TRUE(lease());
  EXPECT_EQ(CopyEndOfFile("/dev/null", path("leased").c_str(), 0, 0), 0);
  ::close(holder);
}

class Copy : public test::SitTest {
 protected:
  void expect_copy(const std::string& content, int trim, const std::string& expected) {
    write_file(path("from"), content);
    EXPECT_EQ(CopyEndOfFile(path("from").c_str(), path("to").c_str(), trim, 0), 0);
    // Not EXPECT_EQ: its diff of two megabytes takes all the memory there is.
    EXPECT_TRUE(read_file(path("to")) == expected);
  }
};

TEST_F(Copy, TrimmedOrWhole) {
  constexpr std::size_t megabyte = 1048576;
  const std::string banner = "PELINVENTORY:  File trimmed to 1 MB...\n\n";
  const std::string exact = repeat("0123456\n", megabyte / 8);
  expect_copy(exact, 1, exact);
  expect_copy("x" + exact, 1, banner + exact.substr(8));
  expect_copy("x" + exact, 0, "x" + exact);
  expect_copy(std::string(megabyte + 1, 'x'), 1, banner);
  const std::string sizeless = "/proc/kallsyms";  // of megabytes
  if (std::filesystem::exists(sizeless)) {
    EXPECT_EQ(CopyEndOfFile(sizeless.c_str(), path("to").c_str(), 1, 0), 0);
    EXPECT_TRUE(read_file(path("to")) == read_file(sizeless));
  }
  for (const std::size_t size : {0U, 1U, 1019U, 1020U, 1021U, 2040U}) {
    write_file(path("from"), std::string(size, 'x'));
    write_file(path("to"), "before\n");
    EXPECT_EQ(CopyEndOfFile(path("from").c_str(), path("to").c_str(), 1, 1), 0);
    EXPECT_EQ(read_file(path("to")), "before\n" + std::string(size, 'x'));
  }
}

TEST_F(Copy, Failures) {
  const std::string from = path("from");
  const std::string to = path("to");
  EXPECT_EQ(CopyEndOfFile(nullptr, "x", 0, 0), -1);
  EXPECT_EQ(CopyEndOfFile("x", nullptr, 0, 0), -1);
  EXPECT_EQ(CopyEndOfFile(from.c_str(), to.c_str(), 1, 0), ENOENT);
  write_file(from, "text\n");
  ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
  const std::tuple<std::string, std::string, int, int> failures[] = {
      {from, "/dev/full", 0, ENOSPC}, {"/dev/full", to, 0, EINVAL},
      {from, path("fifo"), 0, ENXIO}, {from, path("missing/to"), 0, ENOENT},
      {from, from, 1, EINVAL},        {path(""), to, 0, EISDIR},
      {path(""), to, 1, EISDIR}};
  for (const auto& [source, target, append, error] : failures) {
    EXPECT_EQ(CopyEndOfFile(source.c_str(), target.c_str(), 0, append), error) << source << target;
    EXPECT_FALSE(std::filesystem::exists(to)) << "half a copy must not stay";
  }
  std::filesystem::create_symlink("/dev/full", to);
  EXPECT_EQ(CopyEndOfFile(from.c_str(), to.c_str(), 0, 1), ENOSPC);
  EXPECT_FALSE(std::filesystem::is_symlink(to)) << "of a link it is the link that goes";
  EXPECT_TRUE(std::filesystem::exists("/dev/full"));
  EXPECT_EQ(read_file(from), "text\n");
  write_file(to, "before\n");
  EXPECT_EQ(CopyEndOfFile(path("").c_str(), to.c_str(), 0, 1), EISDIR);
  EXPECT_EQ(read_file(to), "before\n") << "appending must not lose what was there";
}

class Shell : public test::SitTest {};

TEST_F(Shell, Listings) {
  const std::string odd = path("a b\"c$d`e\\f\xb5\\\xc3\xbc");
  write_file(odd + "/sub/file", "x");
  std::filesystem::create_symlink(odd + "/sub", odd + "/link");
  for (const int recursive : {0, 1}) {
    const std::string options = recursive != 0 ? "-lLR" : "-lL";
    EXPECT_EQ(written_by([&] { EXPECT_EQ(ListFiles(odd.c_str(), recursive), 0); }),
              test::run("ls " + options + " '" + odd + "'").output + "\n");
  }
  // In some locales a byte from 0x80 on and a backslash behind it are one character.
  SetVerboseMode(1);
  EXPECT_NE(written_by([&] {
              ListFiles(odd.c_str(), 0);
            }).find("a b\\\"c\\$d\\`e\\\\f\"'\xb5'\"\\\\\"'\xc3\xbc'\n"),
            std::string::npos);
  SetVerboseMode(0);
  EXPECT_EQ(written_by([this] { ListFiles(path("missing").c_str(), 0); }),
            "\nERROR: Directory " + path("missing") + " does not exist, errno 2.\n");
  const std::string longest = path(std::string(246 - path("").size(), '$'));
  std::filesystem::create_directory(longest + "/");
  EXPECT_EQ(written_by([&] { ListFiles(longest.c_str(), 0); }), "total 0\n\n");
  EXPECT_EQ(written_by([&] { ListFiles(longest.c_str(), 1); }),
            "ERROR: The command of 256 characters is longer than 255 and is not used: ls -lLR \"" +
                longest.substr(0, 191) + "...\n\n");
}

TEST_F(Shell, Copies) {
  write_file(path("from"), "text\n");
  const std::string copying = "\nCopying " + path("from") + "...\n";
  EXPECT_EQ(written_by([this] { MyCopy(path("from").c_str(), path("to").c_str()); }), copying);
  EXPECT_EQ(read_file(path("to")), "text\n");
  EXPECT_EQ(written_by([this] { MyCopy(path("from").c_str(), path("no/to").c_str()); }),
            copying + "cp: cannot create regular file '" + path("no/to") +
                "': No such file or directory\n");
  EXPECT_EQ(written_by([this] { MyCopy(path("missing").c_str(), "x"); }),
            "\nCannot copy " + path("missing") + " because file does not exist.\n");
  write_file(path("b"), "");
  std::filesystem::create_directory(path("both"));
  write_file(path("from b"), "");  // as it is named, so are two others
  const std::filesystem::path here = std::filesystem::current_path();
  std::filesystem::current_path(path(""));
  EXPECT_EQ(written_by([] { MyCopy("from b", "both"); }), "\nCopying from b...\n");
  EXPECT_TRUE(std::filesystem::exists("both/from") && std::filesystem::exists("both/b"));
  for (const char* name : {"a;touch x", "a$(touch x)", "a`touch x`", "a\ntouch x", "a|touch x",
                           "a&touch x", "a>x", "a*", "-tx a", "a --target-directory=x", "~", "#"}) {
    write_file(path(name), "");
    EXPECT_EQ(written_by([&] { MyCopy(name, "both"); }),
              "\nERROR: Not copying " + std::string(name) +
                  " to both: the shell or cp would not take these names as they stand.\n");
    EXPECT_FALSE(std::filesystem::exists("x")) << name;
  }
  for (const char* target : {"/proc/self/pagemap", "/dev/zero", "../fifo"}) {
    std::filesystem::remove("both/endless");
    std::filesystem::create_symlink(target, "both/endless");
    ::mkfifo("fifo", 0600);
    write_file(path("a both/endless"), "");
    EXPECT_EQ(written_by([] { MyCopy("a both/endless", "both"); }),
              "\nERROR: Not copying a both/endless to both: it is no file of a known size.\n");
  }
  write_file(path("x~1=\xc3\xbc"), "odd");
  EXPECT_EQ(written_by([] { MyCopy("x~1=\xc3\xbc", "both/odd"); }), "\nCopying x~1=\xc3\xbc...\n");
  EXPECT_EQ(read_file("both/odd"), "odd");
  std::filesystem::current_path(here);
  const std::string long_name(510, 'n');
  EXPECT_EQ(written_by([&] { MyCopy(path("from").c_str(), long_name.c_str()); }),
            "ERROR: The command of " + std::to_string(path("from").size() + 515) +
                " characters is longer than 511 and is not used: cp " + path("from") + " " +
                long_name.substr(0, 196 - path("from").size()) + "...\n");
}

}  // namespace
