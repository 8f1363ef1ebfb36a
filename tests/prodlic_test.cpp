#include <array>

#include "support/sit_test.h"

namespace test {
namespace {

class Configuration : public InstallationTest {
 protected:
  using Command = decltype(&GetPelCFGInfo);
  std::string report(const char* key, int selector = SEL_ANY, Command command = GetPelCFGInfo) {
    const int final = command == GetPelCFGInfo ? SIT_FINAL : 0;
    EXPECT_EQ(command(path("r").c_str(), key, SIT_CREATE, final, selector), 0);
    return body_of(path("r"));
  }
};

TEST_F(Configuration, OfEachKindReleaseAndKey) {
  std::string owner;
  make_tool(dir() + "/bin/showcfg", "echo \"cfg: $*\"; exit 3");
  write_file(dir() + "/addons", "Barcodes");
  const auto make = [&](const Row& row) {
    set_version(row.text(0));
    record_.flags = static_cast<unsigned>(row.number(1));
  };
  expect_rows("prodlic", "configuration", [&](const Row& row) {
    make(row);
    owner = row.text(2);
    record_.pelVersion = row[2] == nullptr ? nullptr : owner.data();
    return report(row[4], row.number(3));
  });
  fs::remove(dir() + "/addons");
  fs::create_symlink("/dev/zero", dir() + "/addons");
  set_version("10.1B03");
  record_.flags = 0;
  EXPECT_THAT(report("10.1B"),
              HasSubstr("\nCound not open addons file " + dir() + "/addons, errno = 22\n"));
  expect_rows("prodlic", "name", [&](const Row& row) {
    make(row);
    char found[256];
    EXPECT_EQ(GenPelCfgName(found, &record_), 4);
    return std::string(found);
  });
}

TEST_F(Configuration, NamedByTheEnvironment) {
  const std::string start = title("Pelloran Product and Licensing Information");
  const std::string announced = "PELCFG environment variable setting: ";
  make_tool(dir() + "/bin/showcfg", "echo \"cfg: $*\"");
  set_version("9.0A");
  for (const std::string& named : {path("my $cfg"), std::string()}) {
    set_environment("PELCFG", named.c_str());
    EXPECT_EQ(report("9.0A"), start + announced + named + "\ncfg: " + named + "\n");
  }
  char name[256] = "as it was";
  const std::string longer(255, 'c');
  set_environment("PELCFG", longer.c_str());
  EXPECT_EQ(GenPelCfgName(name, &record_), 3);
  EXPECT_STREQ(name, "as it was");
  EXPECT_EQ(report("9.0A"), start + too_long("value of PELCFG", longer, 254) + announced + "\n");
  const std::string longest(254, 'c');  // with this directory the command is as long as it may be
  move_to(path(std::string(240 - path("").size(), 'd')));
  make_tool(dir() + "/bin/showcfg", "echo \"cfg: $*\"");
  set_environment("PELCFG", longest.c_str());
  EXPECT_EQ(report("9.0A"), start + announced + longest + "\ncfg: " + longest + "\n");
  set_environment("PELCFG", nullptr);
}

TEST_F(Configuration, FrameworkBorrowsTheToolOfThePlainInstallation) {
  set_version("9.0A");
  record_.flags = PK_FRAMEWORK;
  const std::string framework =
      title("Ambrelis Product and Licensing Information") + "Reading " + dir() + "/pelloran.cfg\n";
  EXPECT_EQ(report("9.0A"), framework + run("sh -c '\"\" \"x\"'").output);
  PHMVER plain{};
  PHMVER last{};
  std::string plain_dir = path("plain");
  std::string last_dir = path("last");
  plain.dir = last_dir.data();
  plain.next = &last;
  last.dir = plain_dir.data();
  make_tool(plain_dir + "/bin/showcfg", "echo borrowed");
  record_.next = &plain;
  EXPECT_EQ(report("9.0A"), framework + "borrowed\n");
  plain_dir = "";
  EXPECT_THAT(report("9.0A"), HasSubstr("/bin/showcfg")) << "the root's own";
}

TEST_F(Configuration, AbsurdPaths) {
  const std::string start = title("Pelloran Product and Licensing Information");
  const std::string gone = "\nERROR: PHM is set to /nosuch but could not find such directory.\n";
  move_to("/nosuch");
  EXPECT_EQ(report("10.1B"), start + gone);
  EXPECT_EQ(report("10.1B", SEL_ANY, GetPelInstFiles), gone);
  move_to("/" + std::string(243, 'd'));
  EXPECT_THAT(report("10.1B"), HasSubstr("could not find such directory")) << "it fits";
  move_to(path(std::string(243 - path("").size(), 'd')));
  fs::create_directory(dir());
  const std::string text = report("10.1B");
  EXPECT_EQ(text.find("The path of"), text.rfind("The path of")) << "only the configuration's";
  move_to(std::string(245, 'd'));
  EXPECT_EQ(report("10.1B"), start);
  SetVerboseMode(1);
  EXPECT_EQ(report("10.1B"), "VERBOSE: \n**Verbose Mode **\n" + start +
                                 "VERBOSE: ERROR: GetLicenseInfo - path too long\n");
}

TEST_F(Configuration, FilesOfEveryMatchingInstallation) {
  move_to(path("pel \"1\" $HOME `x`"));
  write_file(dir() + "/sub/file", "");
  const std::string listing = run("ls -lLR '" + dir() + "'").output + "\n";
  PHMVER second = record_;
  second.flags = PK_WEBCLIENT;
  record_.next = &second;
  EXPECT_EQ(report("10.1B", SEL_ANY, GetPelInstFiles), listing + listing);
  EXPECT_EQ(report("9", SEL_ANY, GetPelInstFiles),
            "Could not find any installation that matches 9 9 \n");
  pphm = nullptr;
  fs::remove(path("r"));
  if (fs::exists("/usr/bin/pel")) GTEST_SKIP() << "this machine has a launcher";
  EXPECT_EQ(GetPelCFGInfo(path("r").c_str(), "10.1B", 64, 1, 1), 0);
  EXPECT_EQ(GetPelSecurityLog(path("r").c_str(), "10.1B", 64, 1, 1), 0);
  EXPECT_FALSE(fs::exists(path("r"))) << "nothing to report without installations";
}

class Monitor : public InstallationTest {
 protected:
  void SetUp() override {
    InstallationTest::SetUp();
    delvon_.version = delvon_version_.data();
    delvon_.pelVersion = owner_.data();
    delvon_.flags = PK_MONITOR;
    record_.next = &delvon_;
    init_file_ = path("delvon.ini");
    delvon_.initFile = init_file_.data();
    fs::create_directory(path("out"));
  }

  int collect(const char* key) {
    std::array<char, SIT_PATH_BYTES> target{};
    path("out").copy(target.data(), target.size());
    fs::remove(path("r"));
    const int result = GetDelvonFiles(path("r").c_str(), target.data(), key);
    target_ = target.data();
    return result;
  }
  [[nodiscard]] std::string text() const { return without_header(read_file(path("r"))); }

  PHMVER delvon_{};
  std::string delvon_version_ = "2.1A01";
  std::string owner_ = "10.1B03";
  std::string init_file_;
  std::string target_;
};

TEST_F(Monitor, FilesAreCopiedOrMissed) {
  write_file(path("conf/delvonweb.xml"), "<web/>\n");
  write_file(path("conf/delvon.xml"), "<delvon/>\n");
  write_file(dir() + "/AdminServerPlugins.dat", "plugins\n");
  expect_rows("prodlic", "monitor", [this](const Row& row) {
    set_version(row.text(0));
    fs::remove(init_file_);
    if (row[1] != nullptr) write_file(init_file_, row[1]);
    if (row[1] == nullptr) fs::remove(dir() + "/AdminServerPlugins.dat");
    EXPECT_EQ(collect("2.1A:10.1B03"), 0);
    const std::string report = text();
    EXPECT_EQ(target_, path("out/Delvon21APel101B"));
    EXPECT_EQ(fs::status(target_).permissions(), fs::perms{0755});
    for (const auto& file : fs::directory_iterator(target_)) {
      const std::string name = file.path().filename();
      const std::string from = name == "delvon.ini" ? "" : name[0] == 'A' ? "pel/" : "conf/";
      EXPECT_EQ(read_file(file.path()), read_file(path(from + name)));
    }
    EXPECT_EQ(collect("2.1A:10.1B03"), EEXIST);
    EXPECT_EQ(text(), "\n");
    EXPECT_STREQ(pc->reportDir, "");
    return std::to_string(fs::remove_all(target_) - 1) + report;
  });
}

TEST_F(Monitor, ResultCodes) {
  EXPECT_EQ(collect("2.1A:10.1B"), 0);
  EXPECT_EQ(text(), "Could not find Delvon version 2.1A  -> Pelloran version 10.1B\n\n");
  EXPECT_EQ(target_, path("out"));
  std::string target = path("out");
  std::string deep = path("out") + std::string(254 - path("out").size(), '/');
  EXPECT_EQ(GetDelvonFiles(path("r2").c_str(), deep.data(), "2.1A:10.1B03"), ENAMETOOLONG);
  EXPECT_EQ(without_header(read_file(path("r2"))),
            too_long("path", deep + "/Delvon21APel101B") + "\n");
  set_environment("TMPDIR", "/proc");
  EXPECT_EQ(GetDelvonFiles(nullptr, target.data(), "x"), SIT_NOT_FOUND);
  set_environment("TMPDIR", path("out").c_str());
  EXPECT_EQ(GetDelvonFiles(nullptr, target.data(), "x"), 0);
  EXPECT_FALSE(fs::is_empty(path("out"))) << "the temporary report stays";
}

}  // namespace
}  // namespace test
