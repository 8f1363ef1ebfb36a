#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <ctime>
#include <tuple>

#include "support/sit_test.h"

namespace test {
namespace {

class Report : public SitTest {};

TEST_F(Report, CreateAndAppend) {
  const std::string report = path("report.txt");
  write_file(report, "old\n");
  const std::tuple<int, bool, const char*> openings[] = {{SIT_APPEND, false, "old\nx\n\n"},
                                                         {SIT_CREATE, true, "x\n\n"},
                                                         {SIT_CREATE | SIT_APPEND, true, "x\n\n"}};
  for (const auto& [mode, header, expected] : openings) {
    ASSERT_EQ(LogOpen(report.c_str(), mode), 0);
    EXPECT_EQ(LogMsg("x\n"), 0);
    EXPECT_EQ(LogClose(2), 0);
    const std::string text = read_file(report);
    EXPECT_EQ(header ? without_header(text) : text, expected);
  }
  fs::remove(report);
  EXPECT_EQ(LogOpen(report.c_str(), 0), SIT_BAD_OPEN_MODE);
  EXPECT_FALSE(fs::exists(report));
  ASSERT_EQ(LogOpen(report.c_str(), SIT_APPEND), 0);
  EXPECT_EQ(LogClose(SIT_FINAL), 0);
  EXPECT_EQ(without_header(read_file(report)), "\n==End of Log==\n");
}

TEST_F(Report, WritersSayExactlyThis) {
  SetVerboseMode(1);
  EXPECT_EQ(written_by([] {
              LogTitle("OS Version");
              LogTitle("");
              LogTitle(std::string(170, 't').c_str());
              LogMsg("%s %s\n", "100%d", "%%");
              LogString("%s verbatim\n");
              LogMsgV("two\nlines %d\n", 2);
              LogMsgV("%s\n", std::string(5000, 'v').c_str());
              SetVerboseMode(0);
              LogMsgV("unseen\n");
              print_stat_line();
            }),
            "VERBOSE: \n**Verbose Mode **\n"
            "OS Version\n==========\n\n\n\n\n" +
                std::string(170, 't') + "\n" + std::string(170, '=') +
                "\n\n100%d %%\n%s verbatim\nVERBOSE: two\nlines 2\n"
                "VERBOSE: " +
                std::string(4095, 'v') + "\n" + std::string(80, '=') + "\n\n");
}

TEST_F(Report, DirectoryIsKnownWhileOpen) {
  SIT_Initiate();
  fs::current_path(path(""));
  const std::string here = fs::current_path();
  const std::pair<std::string, std::string> reports[] = {
      {path("r.txt"), path("")}, {"r.txt", here}, {"./r.txt", "./"}};
  for (const auto& [report, directory] : reports) {
    ASSERT_EQ(LogOpen(report.c_str(), SIT_CREATE), 0);
    EXPECT_EQ(pc->reportDir, directory);
    LogClose(0);
    EXPECT_STREQ(pc->reportDir, "");
  }
  for (const auto& [whole, directory] : {std::pair{"/r.txt", "/"}, {"out/", "out/"}, {"r", ""}}) {
    char* part = get_dir(whole);
    EXPECT_STREQ(part, directory);
    std::free(part);
  }
  fs::create_directory(path("gone"));
  fs::current_path(path("gone"));
  fs::remove(path("gone"));
  EXPECT_EQ(LogOpen("r.txt", SIT_CREATE), ENOENT);
  EXPECT_STREQ(pc->reportDir, "");
  fs::current_path("/");
}

// Neither the signal of a reader that is gone nor that of a limit reaches the host.
TEST_F(Report, SignalsOfWriting) {
  ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
  const int reader = ::open(path("fifo").c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  ASSERT_EQ(LogOpen(path("fifo").c_str(), SIT_APPEND), 0);
  ::close(reader);
  EXPECT_EQ(LogMsg("x"), -1);
  EXPECT_EQ(LogClose(0), EPIPE);
  {
    const FileSizeLimit limit(10);
    EXPECT_EQ(LogOpen(path("r").c_str(), SIT_CREATE), 0);
    EXPECT_EQ(LogClose(0), EFBIG);
  }
  sigset_t blocked;
  ::sigemptyset(&blocked);
  ::sigaddset(&blocked, SIGPIPE);
  ::sigprocmask(SIG_BLOCK, &blocked, nullptr);
  std::raise(SIGPIPE);
  EXPECT_EQ(LogOpen("/dev/null", SIT_APPEND), 0);
  EXPECT_EQ(LogClose(0), 0);
  const timespec no_wait{};
  EXPECT_EQ(::sigtimedwait(&blocked, nullptr, &no_wait), SIGPIPE) << "the host's own signal";
  ::sigprocmask(SIG_UNBLOCK, &blocked, nullptr);
  sigset_t left;
  ::sigpending(&left);
  EXPECT_TRUE(sigisemptyset(&left));
  ::sigprocmask(SIG_BLOCK, nullptr, &left);
  EXPECT_TRUE(sigisemptyset(&left)) << "the mask is as before";
}

TEST_F(Report, SlowReaderAndHostUnderATimer) {
  ASSERT_EQ(::mkfifo(path("fifo").c_str(), 0600), 0);
  const int reader = ::open(path("fifo").c_str(), O_RDONLY | O_NONBLOCK);
  const pid_t child = ::fork();
  if (child == 0) {
    ::dup2(reader, STDIN_FILENO);
    ::fcntl(STDIN_FILENO, F_SETFL, 0);
    const std::string command = "sleep 0.1; exec cat >" + path("out");
    ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
  }
  interrupt_every(10000);
  const std::string text(200000, 'x');
  EXPECT_EQ(LogOpen(path("fifo").c_str(), SIT_APPEND), 0);
  ::close(reader);
  EXPECT_EQ(LogString(text.c_str()), 0);
  EXPECT_EQ(LogClose(0), 0);
  interrupt_every(0);
  EXPECT_EQ(::waitpid(child, nullptr, 0), child);
  EXPECT_TRUE(read_file(path("out")) == text + "\n");
}

TEST_F(Report, HeaderSaysWhoWhereAndWhen) {
  ::umask(0);
  set_environment("TZ", "EAST-5");
  ::tzset();
  SIT_Initiate();
  EXPECT_EQ(pc->userName + std::string("\n"), run("id -un").output);
  EXPECT_EQ(getHost(nullptr), 1);
  const std::string report = path("r");
  const auto now = [] { return run("date '+%a %b %e %T %Y'").output; };
  for (const std::string host : {"box", ""}) {
    stcopy(pc->userName, "ann");
    stcopy(pc->hostName, host.c_str());
    const std::string before = now();
    EXPECT_EQ(LogOpen(report.c_str(), SIT_CREATE), 0);
    EXPECT_EQ(LogClose(0), 0);
    const std::string machine = host.empty() ? "** ERROR: Can't get machine name\n"
                                             : "Machine Name        : " + host + "\n";
    const auto with_time = [&](const std::string& time) {
      return "     P E L L O R A N     P E L I N V E N T O R Y     T O O L\n\n"
             "Version             : 11.6\nUser Name           : ann\n" +
             machine + "Date and Time       : " + time + "\n" + std::string(80, '=') + "\n\n\n";
    };
    const std::string text = read_file(report);
    EXPECT_TRUE(text == with_time(before) || text == with_time(now())) << text;
  }
  EXPECT_EQ(FileExists(report.c_str()) & 0777U, 0666U) << "the host's umask decides";
}

TEST_F(Report, NothingOpenThenFullDisk) {
  SetVerboseMode(1);
  for (const int result : {0, -1}) {
    EXPECT_EQ(LogMsg("x"), result);
    EXPECT_EQ(LogMsgV("x"), result);
    EXPECT_EQ(LogString("x"), result);
    LogTitle("x");
    EXPECT_EQ(LogClose(SIT_FINAL), result == 0 ? 0 : ENOSPC);
    EXPECT_EQ(LogOpen("/dev/full", SIT_CREATE), 0);
  }
  LogClose(0);
}

TEST_F(Report, OpenedTwiceKeepsOneDescriptor) {
  const std::vector<int> before = open_descriptors();
  ASSERT_EQ(LogOpen(path("first").c_str(), SIT_CREATE), 0);
  LogMsg("kept\n");
  for (const int fd : open_descriptors()) {
    const bool is_report = !std::binary_search(before.begin(), before.end(), fd);
    EXPECT_TRUE(!is_report || (::fcntl(fd, F_GETFD) & FD_CLOEXEC) != 0) << "children inherit it";
  }
  ASSERT_EQ(LogOpen(path("second").c_str(), SIT_CREATE), 0);
  EXPECT_EQ(LogClose(0), 0);
  EXPECT_EQ(without_header(read_file(path("first"))), "kept\n");
}

}  // namespace
}  // namespace test
