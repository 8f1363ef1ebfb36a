// What "sit collect" brings home from machines that are well.
#include <sys/stat.h>

#include <map>
#include <regex>

#include "support/collection.h"

namespace test {
namespace {

// The files below a folder, by their path there.
std::map<std::string, std::string> files_below(const fs::path& folder) {
  std::map<std::string, std::string> files;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    if (entry.is_regular_file()) {
      files[entry.path().lexically_relative(folder)] = read_file(entry.path());
    }
  }
  return files;
}

class Collect : public CollectTest {
 protected:
  // What is missing or wrong, then the rows, by the manifest; without what differs from run to run.
  [[nodiscard]] std::string told(const Collected& made) const {
    std::string text;
    for (const auto& problem : made.manifest.at("problems")) {
      text += problem.at("text").get<std::string>() + "\n";
      const std::string file = problem.at("file");
      if (file.empty()) continue;
      const int line = problem.at("line");
      const std::string place = file + (line == 0 ? "" : ":" + std::to_string(line));
      text += "    " + place + "\n";
      EXPECT_THAT(made.summary, HasSubstr("    " + place + "\n")) << place;
    }
    for (const auto& row : made.manifest.at("rows")) {
      for (const char* field : {"outcome", "id", "title"}) {
        text += row.at(field).get<std::string>() + " | ";
      }
      text += row.at("file").empty() ? "\n" : row.at("file").get<std::string>() + "\n";
    }
    const std::pair<std::regex, const char*> placeholders[] = {
        {std::regex(sample()), "@DIR@"},
        {std::regex(SICK_LIBRARY "|" CAPTURED_LIBRARY), "@LIBRARY@"},
        {std::regex("[0-9a-f]{8}\\.0"), "HASH.0"},
        {std::regex("ends in 20 days, on \\S+"), "ends in 20 days"}};
    for (const auto& [pattern, name] : placeholders) text = std::regex_replace(text, pattern, name);
    return text;
  }

  [[nodiscard]] std::string in_sample(const std::string& command) const {
    return run("cd " + sample() + "; DIR=$PWD; . " EXPECTED "/functions; " + command).output;
  }
  // The reports as below tests/expected, and everything that was copied beside them.
  void expect_sample_in(const fs::path& folder) const {
    for (const auto& [name, report] : files_below(EXPECTED)) {
      if (!name.ends_with(".txt")) continue;
      EXPECT_EQ(without_header(read_file(folder / name)), in_sample("render " EXPECTED "/" + name))
          << name;
    }
    const fs::path collected = folder / "10.1B";
    for (const std::string name : {"obroker.properties", "conmgr.properties"}) {
      EXPECT_EQ(read_file(collected / (name + ".101B")),
                read_file(sample() + "/pel/properties/" + name));
    }
    EXPECT_EQ(in_sample("logs " + path("logs") + " 2>&1"), "");
    auto copied = files_below(collected / "logs");
    copied.erase("messages.txt");
    EXPECT_TRUE(copied == files_below(path("logs")));
  }
};

TEST_F(Collect, ThisMachine) {
  const Collected made = collect("--label 'a b'");
  EXPECT_EQ(made.status, 0) << made.said;
  EXPECT_EQ(made.printed, made.folder.string() + "\n");
  EXPECT_THAT(made.folder.string(), HasSubstr("-a_b-20"));
  EXPECT_EQ(made.manifest.at("format"), 1);
  EXPECT_EQ(made.manifest.at("label"), "a b");
  EXPECT_EQ(made.manifest.at("complete"), true);
  EXPECT_EQ(made.manifest.at("settings").at("kernel").get<std::string>() + "\n",
            run("uname -r").output);
  EXPECT_THAT(made.summary, HasSubstr("MISSING OR WRONG\n================\nNothing.\n"));
  struct stat status {};
  ASSERT_EQ(::stat(made.folder.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0700U);
  std::string names;
  for (const auto& [name, content] : files_below(made.folder)) {
    names += name + " ";
    ASSERT_EQ(::stat((made.folder / name).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U) << name;
    if (name == "summary.txt" || name == "masked.txt" || !name.ends_with(".txt")) continue;
    without_header(content);
    EXPECT_THAT(content, EndsWith("\n==End of Log==\n")) << name;
  }
  EXPECT_EQ(names,
            "environment.txt index.html manifest.json masked.txt summary.txt system.txt "
            "versions.txt ");
  EXPECT_THAT(read_file(made.folder / "environment.txt"), HasSubstr("TMPDIR='" + temporary() + "'"))
      << "the user's own variables are what counts";
}

TEST_F(Collect, SettingsOfOnesOwn) {
  if (!mount_small("/etc", "64k")) GTEST_SKIP() << "needs a mount namespace";
  const std::string rules = "/etc/sit/settings.d/own.yaml";
  write_file(rules,
             "settings:\n- {name: DB_PASSWORD, variable: DB_PASSWORD}\n"
             "- {name: kernel, file: /proc/self/comm}\n- {name: endless, file: /dev/zero}\n");
  const Collected made = collect("", "export DB_PASSWORD=hunter2");
  const json& settings = made.manifest.at("settings");
  EXPECT_THAT(settings.value("DB_PASSWORD", ""), StartsWith("[masked "));
  EXPECT_EQ(settings.value("kernel", ""), "sit") << "takes the place of the usual one";
  EXPECT_FALSE(settings.contains("endless"));

  write_file(rules, "settings:\n- {name: both, variable: A, file: /b}\n");
  const Collected refused = collect("");
  EXPECT_EQ(refused.status, 2);
  EXPECT_THAT(refused.said, HasSubstr("own.yaml"));
  EXPECT_EQ(refused.folder, "") << "nothing half done";
}

TEST_F(Collect, SampleAndWhatIsAmissInIt) {
  const Collected made = collect(sample_options());
  EXPECT_EQ(made.status, 1);
  EXPECT_EQ(told(made), read_file(EXPECTED "/collection"));
  EXPECT_FALSE(std::regex_search(made.summary, std::regex("[^\n]{81}"))) << made.summary;
  expect_sample_in(made.folder);
  EXPECT_EQ(without_header(read_file(made.folder / "capture-echo/output.txt")),
            "captured\n\n==End of Log==\n");
  EXPECT_TRUE(fs::exists(made.folder / "library-1/left"));
  EXPECT_EQ(read_file(made.folder / "2.1A-of-10.1B03/Delvon21APel101B/delvon.xml"),
            read_file(sample() + "/delvon/conf/delvon.xml"));
}

TEST_F(Collect, HealthySampleHasNothingMissingOrWrong) {
  const Collected made = collect(sample_options("--healthy"));
  EXPECT_EQ(made.status, 0) << made.said;
  EXPECT_TRUE(made.manifest.at("problems").empty()) << made.summary;
}

TEST_F(Collect, LogsOfTheNamedBrokersOnly) {
  static_cast<void>(sample_options());
  const Collected made = collect(
      "--only logs --brokers portal --brokers db:Sports --installation " + sample() + "/pel");
  EXPECT_EQ(made.status, 1) << "the validation, which the logs need, misses a file";
  auto logs = files_below(made.folder / "10.1B/logs");
  EXPECT_EQ(logs.erase("messages.txt"), 1U);
  const std::map<std::string, std::string> expected{
      {"brokers/portal/portal.log", read_file(sample() + "/pel/work/portal.log")},
      {"databases/sports/sports.lg", read_file(sample() + "/pel/databases/sports.lg")}};
  EXPECT_EQ(logs, expected);
}

TEST_F(Collect, StepsAreChosenByTheirIds) {
  static_cast<void>(sample_options());
  const std::string pel = "--installation " + sample() + "/pel ";
  const std::pair<std::string, std::string> chosen[] = {
      {"--only environment", "environment"},
      {"--only 10.1B/files --skip glance", "discovery 10.1B/files"},
      {"--only 10.1B --skip security --skip validation",
       "discovery 10.1B/configuration 10.1B/files"},
      {"--skip 10.1B --skip system", "discovery glance environment versions"}};
  for (const auto& [options, expected] : chosen) {
    const Collected made = collect(pel + options);
    std::string done;
    for (const auto& row : made.manifest.at("rows")) {
      if (row.at("outcome") == "skipped") continue;
      done += (done.empty() ? "" : " ") + row.at("id").get<std::string>();
    }
    EXPECT_EQ(done, expected) << options;
  }
  const std::pair<std::string, std::string> refused[] = {
      {"--only sytem", "no step \"sytem\"; did you mean \"system\"?"},
      {"--skip 10.1B/fils", "no step \"10.1B/fils\"; did you mean \"10.1B/files\"?"},
      {"--command-limit 60", "--command-limit: \"60\" is no number from 0.1 to 59"},
      {"--command-limit nan", "is no number"},
      {"--only apache", "no step \"apache\": only with --apache"},
      {"--jobs 0", "--jobs: Value 0 not in range"},
      {"--progress loud", "--progress is auto, plain or json, not \"loud\""},
      {"--capture-library /lib.so", "--capture-library takes PATH,ENTRY"}};
  for (const auto& [options, message] : refused) {
    const Collected made = collect(pel + options);
    EXPECT_EQ(made.status, 2) << options;
    EXPECT_THAT(made.said, HasSubstr(message));
    EXPECT_EQ(made.printed + made.folder.string(), "") << "nothing half done";
  }
  const Ran listed = run(HOST " collect --list-steps --skip logs 2>/dev/null " + pel);
  EXPECT_THAT(listed.output, HasSubstr("10.1B/files  Files of 10.1B\n"));
  EXPECT_THAT(listed.output, HasSubstr("10.1B/logs  Log files of 10.1B  [left out by --skip]\n"));
  EXPECT_THAT(listed.output,
              HasSubstr("\ndelvon  does not apply: no monitoring installation found"));
}

TEST_F(Collect, ProgressSuitsWhereItGoes) {
  const std::string slow = " --only capture --capture 'sleep 1 # \033]0;x\007'";
  const std::string tool = std::string(HOST) + " collect --output " + path("out") + slow;
  const auto on_terminal = [&](const std::string& terminal) {
    write_file(path("tool"), tool);
    return run("TERM=" + terminal + " script -qec 'sh " + path("tool") + "' /dev/null").output;
  };
  const std::string live = on_terminal("xterm");
  EXPECT_THAT(live, HasSubstr("\r\033[K0 of 1: (0 s) Output of sleep 1 # ?]0;x?"));
  const std::string plain_text = on_terminal("dumb");
  EXPECT_THAT(plain_text, Not(HasSubstr("\033")));
  EXPECT_THAT(plain_text, HasSubstr("Output of sleep 1 # ?]0;x?: ok ("));
  const Collected made = collect("--progress json" + slow);
  std::istringstream lines(made.said);
  std::string events;
  for (std::string line; std::getline(lines, line);) {
    const std::string event = json::parse(line).at("event");
    if (!events.ends_with(event + " ")) events += event + " ";
  }
  EXPECT_EQ(events, "running row message end ");
}

}  // namespace
}  // namespace test
