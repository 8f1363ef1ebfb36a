// Many calls in one process: nothing may pile up.
#include <malloc.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdlib>
#include <fstream>

#include "support/commands.h"
#include "support/sit_test.h"

namespace test {
namespace {

using Call = void (*)();

const Call kCheap[] = {
    [] { EXPECT_EQ(execcmd("exit 3", "out"), 768); },
    [] { EXPECT_EQ(execcmd("true", "/nosuch/out"), 65280); },
    [] { EXPECT_STREQ(strentry(3, "a,bc,def", ','), "def"); },
    [] { std::free(StringTrim("  text  ")); },
    [] { std::free(strtohexmax("bytes", 5, 3)); },
    [] { std::free(GetPelVersList(SEL_ANY)); },
    [] { std::free(GetTempFile()); },
    [] {
      char taken[] = "room for one error";
      PutRecentError("an error");
      EXPECT_EQ(RetrieveErrors(taken), 0);
    },
    [] {
      EXPECT_EQ(LogOpen("report", SIT_CREATE), 0);
      ListFiles(kCopies, 0);
      EXPECT_EQ(LogClose(1), 0);
    },
    [] { EXPECT_EQ(LogOpen(kCopies, SIT_CREATE), EISDIR); },
    [] { EXPECT_EQ(CopyEndOfFile("report", "/nosuch/copy", 1, 1), ENOENT); },
    [] { EXPECT_EQ(GetNetscapeInfo("report", "sample/netscape", "no"), SIT_NO_SERVER_OF_NAME); },
    [] { EXPECT_EQ(RunCommand("no.so", "x", 1, kCopies, ".", "", nullptr), 0); },
    [] {
      EXPECT_EQ(RunCommand(CAPTURED_LIBRARY, "leave_a_file", 1, kCopies, ".", "", nullptr), 0);
    }};

// What a process may run out of.
struct Held {
  std::size_t descriptors = open_descriptors().size();
  int children = ::waitpid(-1, nullptr, WNOHANG);
  std::size_t bytes = ::mallinfo2().uordblks;
  long pages = 0;

  Held() {
    std::ifstream("/proc/self/statm") >> pages >> pages;  // the second number
  }
};

// Every command is among the first calls, then one in a hundred is one.
void call(std::size_t i) {
  const bool is_first = i < std::size(kCommands);
  if (is_first || i % 100 == 0) {
    fs::remove_all("disk/copies/Delvon21APel101B");
    const Command& command = kCommands[(is_first ? i : i / 100) % std::size(kCommands)];
    EXPECT_EQ(command.run(kReport, SIT_CREATE), 0) << command.name;
  } else {
    kCheap[i % std::size(kCheap)]();
  }
  ASSERT_FALSE(testing::Test::HasFailure()) << "call " << i;
}

class Soak : public SitTest {
 protected:
  void expect_nothing_more_after(std::size_t calls) {
    fs::current_path(path(""));
    ASSERT_EQ(run(EXAMPLES "/install sample && mkdir -p disk/reports disk/copies").status, 0);
    set_environment("PHM", path("sample/pel").c_str());
    set_environment("DELVONINIT", path("sample/delvon/delvon.ini").c_str());
    for (std::size_t i = 0; i < 100; ++i) call(i);
    const Held early;
    for (std::size_t i = 100; i < calls && !HasFailure(); ++i) call(i);
    const Held late;
    fs::current_path("/");
    EXPECT_EQ(late.descriptors, early.descriptors);
    EXPECT_EQ(late.children, early.children);
#ifndef __SANITIZE_ADDRESS__
    EXPECT_LE(late.pages, early.pages + 16);
    // A block made anew may be one unit larger. Without that setting malloc also counts what it
    // keeps at hand.
    const bool is_exact = std::getenv("GLIBC_TUNABLES") != nullptr;
    EXPECT_LE(late.bytes, early.bytes + (is_exact ? 128 : 4096));
#endif
  }
};

TEST_F(Soak, HundredsOfCallsHoldNoMoreThanAFew) { expect_nothing_more_after(500); }

TEST_F(Soak, ThousandsOfCallsHoldNoMoreThanAFew) { expect_nothing_more_after(10000); }

}  // namespace
}  // namespace test
