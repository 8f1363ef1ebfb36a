// Every collection command under the faults that machines and hosts are known for.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <utility>

#include "support/commands.h"
#include "support/sit_test.h"

namespace test {
namespace {

constexpr const char* kLog = "disk/copies/orders.broker.log";
const std::string kBefore = std::string(4095, 'b') + "\n";  // a page: no room is left in its last

struct Outcome {
  std::string command;
  int result;
  std::string says = {};  // in the report
};
struct Fault {
  const char* name;
  bool (*begin)();  // false where the machine does not allow it
  void (*end)();
  int closing = 0;                     // what closing the report gives
  std::vector<Outcome> outcomes = {};  // of the commands with another one
  friend std::ostream& operator<<(std::ostream& out, const Fault& f) { return out << f.name; }
};

// Moves a folder to a small disk of its own, unless it is there, and takes that disk's last byte.
bool fill(const char* folder) {
  if (!private_mounts()) return false;
  if (fs::create_directory("small")) {
    if (!mount_small("small", "8m")) return false;
    fs::copy(folder, "small", fs::copy_options::recursive);
    if (::mount("small", folder, nullptr, MS_BIND, nullptr) != 0) return false;
  }
  std::ofstream("small/filler") << std::string(9U << 20U, 'x') << std::flush;
  return true;
}
void make_room() { fs::remove("small/filler"); }

bool limit(__rlimit_resource what, rlim_t most) {
  rlimit now{};
  ::getrlimit(what, &now);
  now.rlim_cur = std::min(most, now.rlim_max);
  return ::setrlimit(what, &now) == 0;
}
bool leave_descriptors(int count) {
  const int next = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  ::close(next);
  return limit(RLIMIT_NOFILE, static_cast<rlim_t>(next) + static_cast<rlim_t>(count));
}
void give_descriptors() { limit(RLIMIT_NOFILE, 1024); }

void leave_children() { handle(SIGCHLD, SIG_DFL); }

constexpr std::size_t kGigabyte = 1U << 30U;
void* resident = nullptr;
bool grow_by_a_gigabyte() {
  constexpr int kKind = MAP_PRIVATE | MAP_ANONYMOUS;
  if (resident != nullptr) return true;
  resident = ::mmap(nullptr, kGigabyte, PROT_READ | PROT_WRITE, kKind, -1, 0);
  ::madvise(resident, kGigabyte, MADV_NOHUGEPAGE);  // the most page tables that it can have
  return resident != MAP_FAILED && std::memset(resident, 'x', kGigabyte) == resident;
}

const Outcome kNotValidated{"GetOBValidationInfo", SIT_VALIDATION_FAILED};
const Outcome kNoStatus{"GetSysInfo", 0, "Unable to extract information."};
const Fault kFaults[] = {
    {"ReportIsDevFull", [] { return ::rename(kReport, "r"), !::symlink("/dev/full", kReport); },
     [] { ::unlink(kReport), ::rename("r", kReport); }, ENOSPC},
    {"ReportsOnFullDisk", [] { return fill("disk/reports"); }, make_room, ENOSPC},
    {"CopiesToFullDisk",
     [] { return fill(kCopies); },
     make_room,
     0,
     {{"GetOBValidationInfo", SIT_VALIDATION_FAILED, "ERROR: Could not copy file, errno = 28"},
      {"OBCopyFiles", 0, "orders.broker.log, ret = 28"},
      {"GetDelvonFiles", 0, "No space left on device"}}},
    {"TemporaryFilesOnFullDisk", [] { return fill(kTemporary); }, make_room},
    {"EverythingOnFullDisk", [] { return fill("disk"); }, make_room, ENOSPC, {kNotValidated}},
    {"FilesMayNotGrow",
     [] { return limit(RLIMIT_FSIZE, kBefore.size()); },
     [] { limit(RLIMIT_FSIZE, RLIM_INFINITY); },
     EFBIG,
     {{"GetNetscapeInfo", 0}, {"GetApacheInfo", 0}}},
    {"NoDescriptor",
     [] { return leave_descriptors(0); },
     give_descriptors,
     EMFILE,
     {{"OBCopyFiles", EMFILE}, {"GetDelvonFiles", EMFILE}, {"RunCommand", EMFILE}}},
    {"OneDescriptor",
     [] { return leave_descriptors(1); },
     give_descriptors,
     0,
     {{"GetSysInfo", 0, "execcmdlist: Failed to create temp file, exiting"},
      {"GetPelSecurityLog", 0, "LogCmdOutput: failed to create temp file"},
      {"GetOBValidationInfo", SIT_VALIDATION_FAILED, "AdminServerPlugins.properties, errno = 24"},
      {"OBCopyFiles", 0, "orders.broker.log, ret = 24"},
      {"RunCommand", EMFILE},
      {"GetApacheInfo", EMFILE},
      {"GetNetscapeInfo", SIT_NO_SERVER_OF_NAME}}},
    {"NoProcess",
     [] {
       run("chmod -R a+rwX disk .");
       return limit(RLIMIT_NPROC, 0) && (::getuid() != 0 || ::setresuid(65534, 65534, 0) == 0);
     },
     [] { static_cast<void>(::setresuid(0, 0, 0)), limit(RLIMIT_NPROC, RLIM_INFINITY); },
     0,
     {kNotValidated,
      {"GetSysInfo", 0, "Error forking uname -X, returned -1"},
      {"GetPelSecurityLog", 0, "Error forking "},
      {"RunCommand", 0, "Error forking ls "}}},
    {"TemporaryFolderIsReadOnly",
     [] {
       return private_mounts() && !::mount(kTemporary, kTemporary, "", MS_BIND, "") &&
              !::mount("", kTemporary, "", MS_REMOUNT | MS_BIND | MS_RDONLY, "");
     },
     [] { ::umount2(kTemporary, MNT_DETACH); }},
    {"HostIgnoresItsChildren",
     [] { return handle(SIGCHLD, SIG_IGN); },
     leave_children,
     0,
     {kNoStatus}},
    {"HostReapsEveryChild",
     [] {
       return handle(SIGCHLD, [](int) {
         while (::waitpid(-1, nullptr, WNOHANG) > 0) continue;
       });
     },
     leave_children,
     0,
     {kNoStatus}},
    {"HostUnderATimer", [] { return interrupt_every(1000); }, [] { interrupt_every(0); }},
    {"HostOfAGigabyte", grow_by_a_gigabyte, [] {}}};

class RealFault : public SitTest, public testing::WithParamInterface<Fault> {
 protected:
  void SetUp() override {
    SitTest::SetUp();
    fs::current_path(path(""));
    ASSERT_EQ(run(EXAMPLES "/install sample").status, 0);
    for (const char* folder : {"disk/reports", kCopies, kTemporary}) fs::create_directories(folder);
    set_environment("TMPDIR", path(kTemporary).c_str());
    set_environment("PHM", path("sample/pel").c_str());
    set_environment("DELVONINIT", path("sample/delvon/delvon.ini").c_str());
  }
  void TearDown() override {
    for (const char* folder : {"disk/reports", kCopies, kTemporary, "disk", "small"}) {
      ::umount2(folder, MNT_DETACH);
    }
    fs::current_path("/");
    if (resident != nullptr) ::munmap(std::exchange(resident, nullptr), kGigabyte);
    SitTest::TearDown();
  }

  // A report that holds something already, and a folder for copies that holds nothing.
  static void prepare(const Command& command) {
    for (const auto& entry : fs::directory_iterator(kCopies)) fs::remove_all(entry);
    fs::remove(kReport);
    if (command.opens != Opens::kAnew) write_file(kReport, kBefore);
  }
  // What the report says at any time: its lines without digits, and without the test's own mounts.
  static std::string report() {
    std::ifstream lines(kReport);
    std::string text;
    for (std::string line; std::getline(lines, line);) {
      const bool is_fixed = line.find_first_of("0123456789") == std::string::npos;
      if (is_fixed && line.find(kTemporary) == std::string::npos) text += line + "\n";
    }
    return text;
  }
};

TEST_P(RealFault, HurtsNothing) {
  const Fault& fault = GetParam();
  for (const Command& command : kCommands) {
    SCOPED_TRACE(command.name);
    prepare(command);
    EXPECT_EQ(command.run(kReport, SIT_APPEND), 0);
    const std::string sound = report();

    prepare(command);
    const std::vector<int> descriptors = open_descriptors();
    const bool has_begun = fault.begin();
    const int result = has_begun ? command.run(kReport, SIT_APPEND) : 0;
    fault.end();
    if (!has_begun) GTEST_SKIP() << "this machine does not allow it";
    Outcome expected{command.name, command.opens == Opens::kAtEnd ? 0 : fault.closing};
    for (const Outcome& other : fault.outcomes) {
      if (other.command == command.name) expected = other;
    }
    EXPECT_EQ(result, expected.result);
    const std::string text = fs::exists(kReport) ? read_file(kReport) : "";
    EXPECT_THAT(text, HasSubstr(expected.says));
    EXPECT_TRUE(command.opens == Opens::kAnew || text.starts_with(kBefore))
        << "lost what was there";
    const bool is_harmless = fault.closing == 0 && fault.outcomes.empty();
    EXPECT_TRUE(!is_harmless || report() == sound) << text;
    EXPECT_EQ(open_descriptors(), descriptors);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a child was left";
    EXPECT_EQ(run("ls disk/tmp disk/reports | grep sit").output, "") << "temporary files";
    EXPECT_TRUE(!fs::exists(kLog) || fs::file_size(kLog) > 1048000) << "half a copy was left";

    prepare(command);
    EXPECT_EQ(command.run(kReport, SIT_APPEND), 0) << "afterwards";
    EXPECT_EQ(report(), sound) << "afterwards";
  }
}

INSTANTIATE_TEST_SUITE_P(With, RealFault, testing::ValuesIn(kFaults),
                         [](const auto& fault) { return std::string(fault.param.name); });

// Another user of the machine, who may do as he likes in the folder for temporary files.
class SecondUser : public SitTest {
 protected:
  void SetUp() override {
    SitTest::SetUp();
    if (::getuid() != 0) GTEST_SKIP() << "needs root";
    fs::permissions(path(""), fs::perms(0755));
    fs::permissions(temporary(), fs::perms(0777));
    write_file(path("root's own"), "of root alone\n");
  }
  void TearDown() override {
    for (const auto& entry : fs::directory_iterator(temporary())) fs::remove(entry);
    SitTest::TearDown();
  }

  // Puts a link to a file of root's, or a file of his own, in the place of every temporary file.
  [[nodiscard]] pid_t attack() const {
    const std::string victim = path("root's own");
    const pid_t attacker = ::fork();
    if (attacker != 0) return attacker;
    if (::setresuid(65534, 65534, 65534) != 0) ::_exit(1);
    for (bool links = true;; links = !links) {
      for (const auto& entry : fs::directory_iterator(temporary())) {
        std::error_code ignored;
        fs::remove(entry, ignored);
        if (links) fs::create_symlink(victim, entry, ignored);
        if (!links) std::ofstream(entry.path()) << "his own\n";
      }
    }
  }
};

TEST_F(SecondUser, NeitherWritesNorReadsThroughTemporaryFiles) {
  const pid_t attacker = attack();
  EXPECT_EQ(written_by([] {
              for (int i = 0; i < 50; ++i) LogCmdOutput("sleep 0.01; echo ours", nullptr);
            }),
            repeat("ours\n", 50));
  EXPECT_EQ(GetSysInfo(path("r").c_str(), 0, SIT_CREATE, 1), 0);
  for (int i = 0; i < 50; ++i) OBCopyFiles(nullptr, "orders", "10.1B03", path("").c_str());
  ::kill(attacker, SIGKILL);
  ::waitpid(attacker, nullptr, 0);
  EXPECT_EQ(read_file(path("root's own")), "of root alone\n");
  const std::string report = read_file(path("r"));
  for (const char* foreign : {"of root alone", "his own"}) {
    EXPECT_THAT(report, Not(HasSubstr(foreign)));
  }
  EXPECT_THAT(report, HasSubstr("Command: uname -a\n\nLinux"));
  for (const auto& entry : fs::directory_iterator(temporary())) {
    struct stat status {};
    ASSERT_EQ(::lstat(entry.path().c_str(), &status), 0);
    if (!S_ISREG(status.st_mode) || status.st_uid == 0) continue;
    EXPECT_TRUE(status.st_size == 0 || read_file(entry) == "his own\n") << read_file(entry);
  }
}

class SmallDisk : public SitTest {};

TEST_F(SmallDisk, FilledByTheOutputOfACommand) {
  if (!mount_small(temporary(), "64k")) GTEST_SKIP() << "this machine does not allow it";
  const std::string text = written_by([] { LogCmdOutput("yes | head -c 100000", nullptr); });
  ::umount2(temporary().c_str(), MNT_DETACH);
  EXPECT_THAT(text, StartsWith("ERROR: Output of yes | head -c 100000 may be lost: its temporary "
                               "file cannot grow, errno = 28\ny\ny\n"));
  EXPECT_GT(text.size(), 60000U) << "what there was room for is kept";
}

}  // namespace
}  // namespace test
