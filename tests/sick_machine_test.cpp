// What "sit collect" brings home from machines and products that are sick, and what it does to
// them.
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <regex>
#include <tuple>

#include "support/collection.h"

namespace test {
namespace {

class SickMachine : public CollectTest {
 protected:
  void SetUp() override {
    CollectTest::SetUp();
    // Its version library is sick when SICKNESS is set.
    write_file(path("pel/version"), "Pelloran Version 10.1B03 as of today\n");
    fs::create_directories(path("pel/bin"));
    fs::copy_file(SICK_LIBRARY, path("pel/bin/versioninfo.dll"));
    // A tool that hangs and will not be asked to end.
    make_tool(path("bin/ipcs"), "trap '' TERM\nfor i in $(seq 300); do sleep 0.1; done");
    sleep_ = "sleep 777." + std::to_string(::getpid());
  }
  void TearDown() override {
    const std::string mark = sleep_.substr(1) + "$|" + path("").substr(2) + "bin/ipcs";
    EXPECT_EQ(run("pgrep -af '[s]" + mark + "' | grep -v pgrep").output, "") << "left behind";
    CollectTest::TearDown();
  }

  [[nodiscard]] std::string installation() const { return "--installation " + path("pel") + " "; }
  [[nodiscard]] std::string with_hung_tool() const { return "PATH=" + path("bin") + ":$PATH"; }

  std::string sleep_;  // a command that nobody else has
};

TEST_F(SickMachine, LibraryThatFallsSickCostsItsRow) {
  const std::string library = path("pel/bin/versioninfo.dll");
  const std::string last_words = ": the library's last words";
  const std::tuple<const char*, const char*, std::string> cases[] = {
      {"abort", "crashed", "signal 6 (Aborted) in "},
      {"overflow", "crashed", "signal 11 (Segmentation fault) in "},
      {"exit", "crashed", "the process ended with status 3 in "},
      {"close", "timed out", "its worker has been cut off in "},
      {"hang", "timed out", "nothing happened for 2 s in "}};
  for (const auto& [sickness, outcome, why] : cases) {
    const std::string sick = std::string("export SICKNESS=") + sickness;
    const bool hangs = std::string(sickness) == "hang";
    const std::string limit = std::string("--command-limit ") + (hangs ? "2 " : "30 ");
    const Collected at_discovery = collect(installation() + limit, sick);
    EXPECT_EQ(at_discovery.status, 1);
    EXPECT_EQ(at_discovery.outcome("discovery"), outcome) << sickness;
    EXPECT_EQ(at_discovery.why("discovery"), why + library + last_words);
    for (const char* row : {"versions", "system", "environment"}) {
      EXPECT_EQ(at_discovery.outcome(row), "ok") << sickness;
    }
    const Collected in_a_row = collect("--only library " + limit +
                                           "--capture-library " SICK_LIBRARY
                                           ",fall_sick "
                                           "--capture-library " CAPTURED_LIBRARY ",leave_a_file",
                                       sick);
    EXPECT_EQ(in_a_row.outcome("library-1"), outcome) << sickness;
    EXPECT_EQ(in_a_row.why("library-1"), why + SICK_LIBRARY + last_words);
    EXPECT_THAT(read_file(in_a_row.folder / "library-1/index.txt"),
                HasSubstr("DLL Entry Point: fall_sick"))
        << "what it had written stays";
    EXPECT_EQ(in_a_row.outcome("library-2"), "ok") << "a new worker goes on";
    EXPECT_TRUE(fs::exists(in_a_row.folder / "library-2/left"));
  }
}

TEST_F(SickMachine, RowsDoNotFeelWhatOthersHaveDoneToTheirWorker) {
  const Collected made = collect("--only library --capture-library " SICK_LIBRARY
                                 ",fall_sick "
                                 "--capture-library " CAPTURED_LIBRARY ",leave_a_file",
                                 "export SICKNESS=stray");
  EXPECT_EQ(made.status, 0) << made.said;
  struct stat status {};
  ASSERT_EQ(::stat((made.folder / "library-2/left").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(SickMachine, HungToolCostsItsLimitOnce) {
  const Collected made = collect("--only system --command-limit 1.5", with_hung_tool());
  EXPECT_EQ(made.status, 1);
  EXPECT_LT(made.seconds, 6);
  EXPECT_EQ(made.why("system"),
            "Semaphore Information timed out, Shared Memory Information timed out");
  std::string commands;
  for (const auto& command : made.manifest.at("commands")) {
    commands += command.at("command").get<std::string>() + ", " +
                command.at("end").get<std::string>() + ", " + command.at("row").get<std::string>() +
                "\n";
  }
  EXPECT_EQ(commands,
            "ipcs -s, killed, system\nipcs -sa, killed, system\n"
            "ipcs -m, killed, system\nipcs -ma, killed, system\n");
  EXPECT_THAT(made.summary,
              HasSubstr("Semaphore Information: timed out, \"ipcs -s\" took more than 1.5 s"));
  EXPECT_THAT(read_file(made.folder / "system.txt"), HasSubstr("\nProcess Listing\n"));
}

TEST_F(SickMachine, HungToolIsToldWhereItsTextWouldStand) {
  static_cast<void>(sample_options("--healthy"));
  make_tool(sample() + "/pel/bin/certutil", "echo partial; exec " + sleep_);
  // Its child is not what is waited for.
  make_tool(sample() + "/pel/bin/rgconfig", sleep_ + " & sleep 0.3");
  for (int i = 0; i < 5; ++i) {
    const Collected made = collect(
        "--only security --only validation --command-limit 1 "
        "--installation " +
        sample() + "/pel");
    EXPECT_EQ(made.why("10.1B/security"), "Certificates timed out");
    const auto problem = made.manifest.at("problems").at(0);
    EXPECT_EQ(problem.at("text"), "Certificates: timed out, \"" + sample() +
                                      "/pel/bin//certutil -list -verbose\" took more than 1 s");
    EXPECT_EQ(problem.at("line"), 15) << "the line of what it had printed";
    EXPECT_EQ(made.outcome("10.1B/validation"), "ok") << made.why("10.1B/validation");
  }
}

TEST_F(SickMachine, LogsTellWhenTheirValidationWasGivenUp) {
  const Collected made = collect(installation() + "--only logs",
                                 "export SICKNESS=abort; export SICK_MARK=" + path("mark"));
  EXPECT_EQ(made.outcome("10.1B/validation"), "crashed");
  EXPECT_EQ(made.outcome("10.1B/logs"), "partial");
  EXPECT_EQ(made.why("10.1B/logs"),
            "what 10.1B/validation finds is not known, since it was given up");
}

TEST_F(SickMachine, CommandsThatDoNotEndOrStayBehind) {
  const Collected made = collect("--only capture --command-limit 1 --capture 'echo before; " +
                                 sleep_ + "' --capture 'setsid " + sleep_ +
                                 " & echo left' --capture 'exit 3' --capture 'nosuchtool' "
                                 "--capture 'kill -9 $$' --capture 'echo x > /dev/tty'");
  EXPECT_EQ(made.status, 1);
  const std::tuple<std::string, std::string, std::string> expected[] = {
      {"capture-echo", "timed out", "\"echo before; " + sleep_ + "\" took more than 1 s"},
      {"capture-sleep", "ok", ""},
      {"capture-exit", "ok", "exit status 3"},
      {"capture-nosuchtool", "failed", "exit status 127"},
      {"capture-kill", "failed", "signal 9 (Killed)"},
      {"capture-echo-2", "ok", "exit status 2"}};
  for (const auto& [id, outcome, why] : expected) {
    EXPECT_EQ(made.outcome(id), outcome) << id;
    EXPECT_EQ(made.why(id), why) << id;
  }
  EXPECT_THAT(read_file(made.folder / "capture-echo/output.txt"), HasSubstr("before\n"));
  EXPECT_EQ(made.row("capture-exit").at("exit"), "exit status 3");
  EXPECT_EQ(made.manifest.at("commands").at(1).at("command"), sleep_);
  EXPECT_EQ(made.manifest.at("commands").at(1).at("end"), "left over; ended by SIGTERM");
}

TEST_F(SickMachine, RunThatIsGivenUpIsFinishedProperly) {
  const std::string work = "--jobs 1 --skip system --capture 'echo done' --capture '" + sleep_ +
                           "' --capture 'echo never'";
  const Collected hung = collect(installation() + "--time-limit 1", "export SICKNESS=hang");
  EXPECT_EQ(hung.outcome("discovery"), "timed out");
  EXPECT_EQ(hung.outcome("versions"), "skipped") << "what was not known of yet is in it, too";
  const std::string later = "sh -c 'sleep 1; pkill -$0 -xP '$$' sit' ";
  const std::array<std::string, 4> cases[] = {
      {"--time-limit 1", "", "timed out", "the run's time limit of 1 s"},
      {"", later + "INT &", "failed", "given up: signal 2 (Interrupt)"},
      {"", later + "TERM &", "failed", "given up: signal 15 (Terminated)"},
      {"", later + "HUP &", "failed", "given up: signal 1 (Hangup)"}};
  for (const auto& [options, before, outcome, why] : cases) {
    const Collected made = collect(work + " " + options, before);
    EXPECT_EQ(made.status, 1) << why;
    EXPECT_EQ(made.printed, made.folder.string() + "\n");
    EXPECT_EQ(made.manifest.at("given_up"), why);
    EXPECT_EQ(made.outcome("capture-echo"), "ok");
    EXPECT_EQ(made.outcome("capture-sleep"), outcome);
    EXPECT_EQ(made.outcome("capture-echo-2"), "skipped");
    EXPECT_EQ(made.why("capture-echo-2"), why);
    EXPECT_FALSE(fs::exists(made.folder / ".tmp"));
  }
}

TEST_F(SickMachine, HostOfAnyStateCollectsAndLeavesOthersAlone) {
  // Started with a child that it does not know, SIGCHLD ignored and a standard stream closed; and
  // not to be ended by SIGHUP.
  make_tool(path("start"), sleep_ + " > /dev/null 2>&1 & echo $! > " + path("stranger") +
                               "\n(sleep 0.5; kill -HUP $$) > /dev/null 2>&1 &\n"
                               "trap '' HUP CHLD\nexec \"$@\" <&-");
  const Collected made = collect("--only environment --only capture --capture 'sleep 1'",
                                 "exec " + path("start") + " \\");
  EXPECT_EQ(made.status, 0) << made.said;
  EXPECT_EQ(run("kill $(cat " + path("stranger") + ")").status, 0) << "still there";
}

TEST_F(SickMachine, WhatFailsInAReportIsTold) {
  static_cast<void>(sample_options("--healthy"));
  const std::string pel = sample() + "/pel/";
  make_tool(pel + "bin/certutil", "exit 3");
  make_tool(pel + "bin/dbconfig", "kill -SEGV $$");
  make_tool(pel + "bin/apconfig", "echo '  (8287) Cannot load property x of orders'");
  write_file(pel + "installd.ini", "ERROR: this is no error\nCannot be one\n");
  const Collected made = collect(
      "--only configuration --only security --only validation "
      "--only library --installation " +
      pel + " --capture-library " SICK_LIBRARY ",nosuchentry");
  const std::pair<const char*, std::string> expected[] = {
      {"10.1B/configuration", ""},
      {"10.1B/security", "Certificates incomplete"},
      {"10.1B/validation",
       "Validation of Connection Manager properties file incomplete; result 10016, a validation "
       "failed or could not be made"},
      {"library-1", "DLL failed: " SICK_LIBRARY ": undefined symbol: nosuchentry"}};
  for (const auto& [row, why] : expected) EXPECT_EQ(made.why(row), why);
  EXPECT_THAT(made.summary, HasSubstr("a command ended with exit status 3\n"));
}

TEST_F(SickMachine, ClosedPipeLosesNothing) {
  run("(" HOST " collect --format none --only capture --capture 'sleep 0.5' --output " +
      path("out") + "; echo $? > " + path("status") + ") 2>&1 | true");
  for (int i = 0; i < 50 && !fs::exists(path("status")); ++i) ::usleep(100000);
  EXPECT_EQ(read_file(path("status")), "1\n") << "nobody got the path";
  const fs::path folder = *fs::directory_iterator(path("out"));
  EXPECT_TRUE(json::parse(read_file(folder / "manifest.json")).at("complete"));
}

TEST_F(SickMachine, FullDiskIsToldWhereTextWasLost) {
  if (!mount_small(path("out"), "400k")) GTEST_SKIP() << "needs a mount namespace";
  make_tool(path("bin/ps"), "yes 'a process among many' | head -c 390000");
  make_tool(path("bin/sysctl"), "yes 'a setting; the next sysctl is asked' | head -c 390000");
  const std::string no_space = "no space left on " + path("out") + " (tmpfs)";
  const Collected made = collect("--jobs 1", with_hung_tool() + "; rm " + path("bin/ipcs"));
  EXPECT_EQ(made.status, 1);
  EXPECT_EQ(made.why("system"), "Process Listing incomplete");
  EXPECT_THAT(made.said, HasSubstr(no_space));
  const auto sections = made.row("system").at("sections");
  for (const auto& section : sections) {
    const bool is_lost = section.at("title") == "Process Listing";
    EXPECT_EQ(section.at("why") == no_space, is_lost) << section;
  }
  EXPECT_EQ(made.outcome("environment"), "ok");

  const std::string filler = path("out/filler");
  const Collected none = collect("", "head -c 398k /dev/zero > " + filler);
  EXPECT_EQ(none.status, 3);
  EXPECT_EQ(none.said, "sit: " + no_space + "\n");
  EXPECT_EQ(run("ls -A " + path("out")).output, "filler\n") << "nothing half made";
}

TEST_F(SickMachine, FoldersOfAnyNameRunNothing) {
  static_cast<void>(sample_options());
  const std::string names[] = {
      "a b", "$(touch pwned)", "; touch pwned #", "'\"`touch pwned`",
      std::string(120, 'x') + "/" + std::string(120, 'y') + "/" + std::string(120, 'z')};
  for (const std::string& name : names) {
    write_file(path("name"), path(name));
    const Ran ran = run("(" HOST " collect --format none --output \"$(cat " + path("name") +
                        ")\" --skip system --no-extras --installation " + sample() +
                        "/pel --capture 'cat $0' 2>/dev/null)");
    fs::path folder;
    for (const auto& entry : fs::directory_iterator(path(name))) folder = entry.path();
    EXPECT_EQ(ran.output, folder.string() + "\n");
    const auto manifest = json::parse(read_file(folder / "manifest.json"));
    EXPECT_EQ(manifest.at("problems").size(), 6U) << manifest.at("problems").dump(1);
    EXPECT_TRUE(fs::exists(folder / "10.1B/logs/brokers/portal/portal.log"));
  }
  EXPECT_EQ(run("find " + path("") + " -name pwned").output, "");
}

TEST_F(SickMachine, NamesFoundOnTheMachineLeadNowhere) {
  write_file(path("odd/version"), "Pelloran Version ../../up as of today\n");
  write_file(path("odd/properties/obroker.properties"), "");
  write_file(path("logs/one/my log;$HOME.txt"), "1");
  write_file(path("logs/two/my log;$HOME.txt"), "2");
  std::string output;
  for (const char* broker : {"a/b", "a_b", ".."}) {
    output += std::string("echo 'Configuration Information for x.") + broker + "'\n";
    output += "echo 'brokerLogFile: " + path("logs/one/my log;$HOME.txt") + "'\n";
    output += "echo 'srvrLogFile: " + path("logs/two/my log;$HOME.txt") + "'\n";
  }
  make_tool(path("odd/bin/apconfig"), output);
  const Collected made = collect("--only logs --installation " + path("odd"));
  std::string files;
  for (const auto& entry : fs::recursive_directory_iterator(made.folder)) {
    const std::string name = entry.path().lexically_relative(made.folder);
    EXPECT_TRUE(std::regex_match(name, std::regex("[A-Za-z0-9._/-]+"))) << name;
    if (name.find("/logs/") != std::string::npos && entry.is_regular_file()) {
      files += read_file(entry.path()).substr(0, 1);
    }
  }
  std::sort(files.begin(), files.end());
  EXPECT_EQ(files, " 111222") << "both logs of all three brokers, and the messages";
  EXPECT_FALSE(fs::exists(path("up"))) << "nothing beside the folder";
}

TEST_F(SickMachine, FolderMayBeMovedMeanwhile) {
  const Collected made = collect(
      "--only capture --capture 'sleep 1; echo late'",
      "(until ls " + path("out/") + "sit-*/capture-sleep; do sleep 0.1; done >/dev/null 2>&1; mv " +
          path("out/") + "sit-* " + path("moved") + "; mkdir -p " + path("out/") + "sit-trap) &");
  EXPECT_EQ(made.status, 0);
  EXPECT_EQ(made.printed, path("moved") + "\n");
  EXPECT_THAT(read_file(path("moved/capture-sleep/output.txt")), HasSubstr("late\n"));
  EXPECT_TRUE(fs::exists(path("moved/manifest.json")));
  EXPECT_TRUE(fs::is_empty(path("out/sit-trap")));
}

TEST_F(SickMachine, WhatIsNamedAndIsNotThereIsSaid) {
  const Collected made =
      collect("--only discovery --monitoring " + path("no.ini"), "export PHM=" + path("gone"));
  EXPECT_EQ(made.status, 1);
  EXPECT_EQ(made.why("discovery"), "the installation " + path("gone") +
                                       " is not there; the init file " + path("no.ini") +
                                       " is not there; no installation found");
}

}  // namespace
}  // namespace test
