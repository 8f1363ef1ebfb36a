// Ten thousand calls in one process: nothing may pile up.
#include <malloc.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "support/sit_test.h"

namespace {

#ifdef __SANITIZE_ADDRESS__
constexpr int kCalls = 1000;  // counts no memory, and takes its time
#else
constexpr int kCalls = 10000;
#endif

using Call = void (*)();

const Call kCheap[] = {
    [] { EXPECT_EQ(execcmd("true", "out"), 0); },
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
      EXPECT_EQ(LogMsg("%s %d %x%r", "text", 1, 2), 0);
      ListFiles("copies", 0);
      EXPECT_EQ(LogClose(1), 0);
    },
    [] { EXPECT_EQ(LogOpen("copies", SIT_CREATE), EISDIR); },
    [] { EXPECT_EQ(CopyEndOfFile("report", "/nosuch/copy", 1, 1), ENOENT); },
    [] { EXPECT_EQ(GetEnvironInfo("report", 64, 1), 0); },
    [] { EXPECT_EQ(GetApacheInfo("report", "sample/apache"), 0); },
    [] { EXPECT_EQ(GetNetscapeInfo("report", "sample/netscape", "no"), SIT_NO_SERVER_OF_NAME); },
    [] { EXPECT_EQ(OBCopyFiles("report", "portal", "10.1B03", "copies"), 0); },
    [] { EXPECT_EQ(RunCommand("echo x", "", 0, "copies", ".", "out", "index"), 0); },
    [] { EXPECT_EQ(RunCommand("no.so", "x", 1, "copies", ".", "", nullptr), 0); },
    [] {
      EXPECT_EQ(RunCommand(CAPTURED_LIBRARY, "leave_a_file", 1, "copies", ".", "", nullptr), 0);
    }};

const Call kDear[] = {
    [] { EXPECT_EQ(GetOBValidationInfo("copies", "report", "10.1B", 64, 0, "", ""), 0); },
    [] { EXPECT_EQ(GetSysInfo("report", 0, 64, 1), 0); },
    [] { EXPECT_EQ(GetVersInfo("report", 64, 1, 1), 0); },
    [] { EXPECT_EQ(GetPelCFGInfo("report", "10.1B", 64, 1, 1), 0); },
    [] { EXPECT_EQ(GetPelInstFiles("report", "10.1B", 64, 1, 1), 0); },
    [] { EXPECT_EQ(GetPelSecurityLog("report", "10.1B", 64, 1, 1), 0); },
    [] {
      char folder[SIT_PATH_BYTES] = "copies";
      std::filesystem::remove_all("copies/Delvon21APel101B");
      EXPECT_EQ(GetDelvonFiles("report", folder, "2.1A:10.1B03"), 0);
    }};

// What a process may run out of.
struct Held {
  std::size_t descriptors = test::open_descriptors().size();
  int children = ::waitpid(-1, nullptr, WNOHANG);
  std::size_t bytes = ::mallinfo2().uordblks;
  long pages = 0;

  Held() {
    std::ifstream("/proc/self/statm") >> pages >> pages;  // the second number
  }
};

class Soak : public test::SitTest {};

TEST_F(Soak, ManyCallsHoldNoMoreThanAFew) {
  std::filesystem::current_path(path(""));
  ASSERT_EQ(test::run(EXAMPLES "/install sample && mkdir copies").status, 0);
  test::set_environment("PHM", path("sample/pel").c_str());
  test::set_environment("DELVONINIT", path("sample/delvon/delvon.ini").c_str());
  // Every dear call among the first, then one in a hundred.
  const auto run = [](std::size_t i) {
    const bool is_first = i < std::size(kDear);
    const std::size_t dear = is_first ? i : i / 100;
    (is_first || i % 100 == 0 ? kDear[dear % std::size(kDear)] : kCheap[i % std::size(kCheap)])();
    ASSERT_FALSE(HasFailure()) << "call " << i;
  };
  for (std::size_t i = 0; i < 100; ++i) run(i);
  const Held early;
  for (std::size_t i = 100; i < kCalls && !HasFailure(); ++i) run(i);
  const Held late;
  std::filesystem::current_path("/");
  std::cout << early.bytes << " bytes and " << early.pages << " pages, then " << late.bytes
            << " and " << late.pages << "\n";
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

}  // namespace
