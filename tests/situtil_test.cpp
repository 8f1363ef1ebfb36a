#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <tuple>

#include "support/sit_test.h"

namespace test {
namespace {

class Capture : public SitTest {};

TEST_F(Capture, OutputStandsInTheReportWhateverTheStatus) {
  EXPECT_EQ(written_by([] {
              LogCmdOutput("echo out; echo err >&2; exit 1", nullptr);
              LogCmdOutput("true", nullptr);
              ::umask(0);
              LogCmdOutput("stat -c %a \"$TMPDIR\"/sit*", nullptr);
              LogCmdOutput("printf 'a\\0%%d\\377'", nullptr);
            }),
            std::string("out\nerr\n600\na\0%d\377", 17));
  {
    const FileSizeLimit limit(8192);  // below the few KB that are tried out
    EXPECT_EQ(written_by([] { LogCmdOutput("printf %05000d 0", nullptr); }),
              std::string(5000, '0'));
  }
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
    EXPECT_THAT(std::string(name), StartsWith(expected)) << name;
    EXPECT_FALSE(fs::exists(name));
    std::free(name);
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
            no_file(path("")));
  const std::string endless = "/proc/self/pagemap";
  const std::string text = written_by([&] { EXPECT_EQ(ReadTextFile(endless.c_str()), 0); });
  EXPECT_EQ(text.size() - text.rfind('\0') - 1 + (16U << 20U), text.size());
  EXPECT_THAT(text,
              EndsWith("\nWARNING: Only the first 16777216 bytes of " + endless + " were read.\n"));
  EXPECT_EQ(FileExists(path("missing").c_str()), 0U);
  EXPECT_EQ(FileExists(path("").c_str()) & 0x4000U, 0x4000U);
}

// The holder gives the lease up a while after the kernel asks for it.
TEST_F(Capture, FileUnderALease) {
  static int holder;
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

class Copy : public SitTest {
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
  if (fs::exists(sizeless)) {
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
    EXPECT_FALSE(fs::exists(to)) << "half a copy must not stay";
  }
  fs::create_symlink("/dev/full", to);
  EXPECT_EQ(CopyEndOfFile(from.c_str(), to.c_str(), 0, 1), ENOSPC);
  EXPECT_FALSE(fs::is_symlink(to)) << "of a link it is the link that goes";
  EXPECT_TRUE(fs::exists("/dev/full"));
  EXPECT_EQ(read_file(from), "text\n");
  write_file(to, "before\n");
  EXPECT_EQ(CopyEndOfFile(path("").c_str(), to.c_str(), 0, 1), EISDIR);
  EXPECT_EQ(read_file(to), "before\n") << "appending must not lose what was there";
}

class Shell : public SitTest {};

TEST_F(Shell, Listings) {
  const std::string odd = path("a b\"c$d`e\\f\xb5\\\xc3\xbc");
  write_file(odd + "/sub/file", "x");
  fs::create_symlink(odd + "/sub", odd + "/link");
  for (const int recursive : {0, 1}) {
    const std::string options = recursive != 0 ? "-lLR" : "-lL";
    EXPECT_EQ(written_by([&] { EXPECT_EQ(ListFiles(odd.c_str(), recursive), 0); }),
              run("ls " + options + " '" + odd + "'").output + "\n");
  }
  // In some locales a byte from 0x80 on and a backslash behind it are one character.
  SetVerboseMode(1);
  EXPECT_THAT(written_by([&] { ListFiles(odd.c_str(), 0); }),
              HasSubstr("a b\\\"c\\$d\\`e\\\\f\"'\xb5'\"\\\\\"'\xc3\xbc'\n"));
  SetVerboseMode(0);
  EXPECT_EQ(written_by([this] { ListFiles(path("missing").c_str(), 0); }),
            "\nERROR: Directory " + path("missing") + " does not exist, errno 2.\n");
  const std::string longest = path(std::string(246 - path("").size(), '$'));
  fs::create_directory(longest + "/");
  EXPECT_EQ(written_by([&] { ListFiles(longest.c_str(), 0); }), "total 0\n\n");
  EXPECT_EQ(written_by([&] { ListFiles(longest.c_str(), 1); }),
            too_long("command", "ls -lLR \"" + longest + '"') + "\n");
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
  fs::create_directory(path("both"));
  write_file(path("from b"), "");  // as it is named, so are two others
  const fs::path here = fs::current_path();
  fs::current_path(path(""));
  EXPECT_EQ(written_by([] { MyCopy("from b", "both"); }), "\nCopying from b...\n");
  EXPECT_TRUE(fs::exists("both/from") && fs::exists("both/b"));
  for (const char* name : {"a;touch x", "a$(touch x)", "a`touch x`", "a\ntouch x", "a|touch x",
                           "a&touch x", "a>x", "a*", "-tx a", "a --target-directory=x", "~", "#"}) {
    write_file(path(name), "");
    EXPECT_EQ(written_by([&] { MyCopy(name, "both"); }),
              "\nERROR: Not copying " + std::string(name) +
                  " to both: the shell or cp would not take these names as they stand.\n");
    EXPECT_FALSE(fs::exists("x")) << name;
  }
  for (const char* target : {"/proc/self/pagemap", "/dev/zero", "../fifo"}) {
    fs::remove("both/endless");
    fs::create_symlink(target, "both/endless");
    ::mkfifo("fifo", 0600);
    write_file(path("a both/endless"), "");
    EXPECT_EQ(written_by([] { MyCopy("a both/endless", "both"); }),
              "\nERROR: Not copying a both/endless to both: it is no file of a known size.\n");
  }
  write_file(path("x~1=\xc3\xbc"), "odd");
  EXPECT_EQ(written_by([] { MyCopy("x~1=\xc3\xbc", "both/odd"); }), "\nCopying x~1=\xc3\xbc...\n");
  EXPECT_EQ(read_file("both/odd"), "odd");
  fs::current_path(here);
  const std::string long_name(510, 'n');
  EXPECT_EQ(written_by([&] { MyCopy(path("from").c_str(), long_name.c_str()); }),
            too_long("command", "cp " + path("from") + " " + long_name + "\n", 511));
}

}  // namespace
}  // namespace test
