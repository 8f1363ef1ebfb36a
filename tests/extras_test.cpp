// Commands that are captured on every machine, as files of rules tell of them.
#include <unistd.h>

#include "support/collection.h"

namespace test {
namespace {

class Extras : public CollectTest {
 protected:
  [[nodiscard]] std::string file(const std::string& name, const std::string& rules) const {
    write_file(path(name), "captures:\n" + rules);
    return "--capture-file " + path(name) + " ";
  }
  const std::string only = "--only extra --no-extras ";
};

TEST_F(Extras, EachIsARowThatTellsHowItsCommandEnded) {
  const Collected made = collect(
      only +
      file("one.yaml",
           "  - {name: x, title: replaced, command: 'false'}\n"
           "  - {name: status, title: Status, command: 'echo out; exit 3'}\n"
           "  - {name: killed, title: Killed, command: 'kill -9 $$'}\n"
           "  - {name: slow, title: Slow, command: 'echo begun; sleep 300', limit: 0.5}\n"
           "  - {name: long, title: Long, command: seq 2000, cap: 2KiB}\n"
           "  - {name: gone, title: Gone, command: no-such-tool -x}\n"
           "  - {name: needs, title: Needs, command: 'A=1 true | cat', tool: no-such-tool}\n"
           "  - {name: root, title: Root, command: id -u, needs-root: true}\n") +
      file("two.yaml", "  - {name: x, title: Secret, command: echo password=S3cret}\n"));
  EXPECT_EQ(made.status, 1);
  std::string rows;
  for (const auto& row : made.manifest.at("rows")) {
    if (!row.at("id").get<std::string>().starts_with("extra/")) continue;
    for (const char* field : {"id", "title", "outcome"}) {
      rows += row.at(field).get<std::string>() + " | ";
    }
    rows += row.at("why").get<std::string>() + "\n";
  }
  const std::string root = ::geteuid() == 0 ? "ok | \n" : "skipped | for root alone\n";
  EXPECT_EQ(rows,
            "extra/x | Secret | ok | \n"
            "extra/status | Status | ok | exit status 3\n"
            "extra/killed | Killed | ok | signal 9 (Killed)\n"
            "extra/slow | Slow | timed out | \"echo begun; sleep 300\" took more than 0.5 s\n"
            "extra/long | Long | ok | \n"
            "extra/gone | Gone | skipped | not on this machine\n"
            "extra/needs | Needs | skipped | not on this machine\n"
            "extra/root | Root | " +
                root);
  EXPECT_EQ(made.row("extra/status").at("exit"), "exit status 3");
  EXPECT_THAT(made.summary,
              HasSubstr("skipped     not on this machine: extra/gone, extra/needs\n"));
  EXPECT_THAT(read_file(made.folder / "extra/x.txt"), Not(HasSubstr("S3cret")));
  EXPECT_THAT(made.summary,
              HasSubstr("extra/long.txt\n" + std::string(31, ' ') + "of 9.0 KiB both ends\n"));
  EXPECT_THAT(made.summary, HasSubstr("1 of 11 rows not ok\n")) << "nothing else";
  const auto cut = made.manifest.at("cuts").at(0);
  EXPECT_EQ(cut.at("meant"), true);
  EXPECT_THAT(read_file(made.folder / "extra/long.txt"),
              HasSubstr("[sit: " + cut.at("left_out").dump() + " bytes of "));
}

// Whatever of them a machine has, a plain one is complete with them.
TEST_F(Extras, UsualOnes) {
  const Collected made = collect("--only extra");
  EXPECT_EQ(made.status, 0) << made.said;
  EXPECT_EQ(made.outcome("extra/kernel"), "ok");
  EXPECT_THAT(read_file(made.folder / "extra/kernel.txt"), HasSubstr("\ntainted "));
  for (const auto& row : made.manifest.at("rows")) {
    EXPECT_NE(row.value("exit", ""), "exit status 2") << "not a command that its shell reads";
  }
}

}  // namespace
}  // namespace test
