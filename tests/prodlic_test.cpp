#include <array>
#include <filesystem>

#include "support/sit_test.h"

namespace {

using test::make_tool;
using test::read_file;
using test::set_environment;
using test::title;
using test::without_header;
using test::write_file;

const std::string kTitle = title("Pelloran Product and Licensing Information");

constexpr const char* kGone = "\nERROR: PHM is set to /nosuch but could not find such directory.\n";

std::string no_match(const std::string& first, const std::string& second) {
  return "Could not find any installation that matches " + first + " " + second + " \n";
}

class Configuration : public test::InstallationTest {
 protected:
  void SetUp() override {
    InstallationTest::SetUp();
    set_environment("PELCFG", nullptr);
  }
  using Command = decltype(&GetPelCFGInfo);
  std::string report(const std::string& key, int selector = SEL_ANY,
                     Command command = GetPelCFGInfo) {
    const int final = command == GetPelCFGInfo ? SIT_FINAL : 0;
    EXPECT_EQ(command(path("r").c_str(), key.c_str(), SIT_CREATE, final, selector), 0);
    const std::string text = without_header(read_file(path("r")));
    EXPECT_TRUE(text.ends_with("\n==End of Log==\n")) << text;
    return text.substr(0, text.size() - 16);
  }
  [[nodiscard]] std::string file_section(const std::string& name,
                                         const std::string& content) const {
    return "\n" + title("Contents of: " + dir() + "/" + name) + content;
  }
};

TEST_F(Configuration, OfAPlainInstallation) {
  make_tool(dir() + "/bin/showcfg", "echo \"cfg: $*\"; exit 3");
  write_file(dir() + "/installd.ini", "[Installation]\n");
  write_file(dir() + "/addons", "Barcodes 1.12");
  const std::string listing =
      kTitle + "Reading " + dir() + "/pelloran.cfg\ncfg: " + dir() + "/pelloran.cfg\n";
  EXPECT_EQ(report("10.1B"), listing + file_section("installd.ini", "[Installation]\n") +
                                 file_section("addons", "Barcodes 1.12"));
  EXPECT_EQ(report("10.1B03"), no_match("10.1B03", "10.1B03"));
  EXPECT_EQ(report("10.1B:x:y"), report("10.1B")) << "only monitoring records look at field 2";

  std::filesystem::remove(dir() + "/installd.ini");
  std::filesystem::remove(dir() + "/addons");
  const std::string without =
      file_section("installd.ini", "Could not open " + dir() + "/installd.ini, errno = 2\n");
  EXPECT_EQ(report("10.1B"), listing + without);

  for (const char* early : {"9.0A", "8.3", "18.1"}) {
    set_version(early);
    EXPECT_EQ(report(early), listing) << early;
  }
}

TEST_F(Configuration, NamedByTheEnvironment) {
  make_tool(dir() + "/bin/showcfg", "echo \"cfg: $*\"");
  set_version("9.0A");
  set_environment("PELCFG", path("my $cfg").c_str());
  EXPECT_EQ(report("9.0A"), kTitle + "PELCFG environment variable setting: " + path("my $cfg") +
                                "\ncfg: " + path("my $cfg") + "\n");
  set_environment("PELCFG", "");
  EXPECT_EQ(report("9.0A"), kTitle + "PELCFG environment variable setting: \ncfg: \n");
  char name[256] = "as it was";
  set_environment("PELCFG", std::string(255, 'c').c_str());
  EXPECT_EQ(GenPelCfgName(name, &record_), 3);
  EXPECT_STREQ(name, "as it was");
  EXPECT_EQ(report("9.0A"),
            kTitle +
                "ERROR: The value of PELCFG of 255 characters is longer than 254 and "
                "is not used: " +
                std::string(200, 'c') + "...\nPELCFG environment variable setting: \n");
}

TEST_F(Configuration, FileForEachKind) {
  const auto expect = [this](const std::string& name, const char* version, unsigned flags) {
    set_version(version);
    record_.flags = flags;
    char found[256];
    EXPECT_EQ(GenPelCfgName(found, &record_), 4);
    EXPECT_EQ(found, dir() + "/" + name) << flags << " " << version;
  };
  expect("delvon.cfg", "2.1A", PK_MONITOR);
  expect("delvon.cfg", "2.1A", 32);
  expect("pelloran.cfg", "1.1A", PK_MONITOR);
  expect("emb.cfg", "2.0", PK_FRAMEWORK);
  expect("pelloran.cfg", "1.0", PK_FRAMEWORK);
  expect("delvon.cfg", "2.0", PK_FRAMEWORK | PK_MONITOR);
  for (const unsigned flags : {0U, unsigned{PK_EXTRA}}) expect("pelloran.cfg", "2.1A", flags);
}

TEST_F(Configuration, OfOtherKinds) {
  const std::string missing_tool = test::run("sh -c '\"\" \"x\"'").output;
  set_version("9.0A");
  record_.flags = PK_FRAMEWORK;
  const std::string framework =
      title("Ambrelis Product and Licensing Information") + "Reading " + dir() + "/pelloran.cfg\n";
  EXPECT_EQ(report("9.0A"), framework + missing_tool);
  PHMVER plain{};
  std::string plain_dir = path("plain");
  plain.dir = plain_dir.data();
  make_tool(plain_dir + "/bin/showcfg", "echo borrowed");
  record_.next = &plain;
  EXPECT_EQ(report("9.0A"), framework + "borrowed\n");
  plain_dir = "";
  EXPECT_NE(report("9.0A").find("/bin/showcfg"), std::string::npos) << "the root's own";
  record_.next = nullptr;

  record_.flags = PK_WEBCLIENT;
  EXPECT_EQ(report("9.0A"), no_match("9.0A", "9.0A")) << "web clients are not reported";
  make_tool(dir() + "/bin/showcfg", "echo own");
  record_.flags = PK_EXTRA;
  EXPECT_EQ(report("9.0A", SEL_EXTRA), "Reading " + dir() + "/pelloran.cfg\nown\n") << "no title";
  record_.flags = PK_MONITOR;
  EXPECT_EQ(report("9.0A:10.1B03"), no_match("9.0A", "10.1B03")) << "it belongs to nothing yet";
  std::string owner = "10.1B03";
  record_.pelVersion = owner.data();
  EXPECT_EQ(report("9.0A:10.1B03"), title("DELVON Product and Licensing Information") + "Reading " +
                                        dir() + "/pelloran.cfg\nown\n");
  EXPECT_EQ(report("9.0A:10.1B"), no_match("9.0A", "10.1B"));
}

TEST_F(Configuration, AbsurdKeysAndPaths) {
  const std::string longest(255, 'k');
  for (const auto& key : {"", longest.c_str()}) EXPECT_EQ(report(key), no_match(key, key));
  const std::string too_long(300, 'k');
  EXPECT_EQ(report(too_long),
            "ERROR: The version key of 300 characters is longer than 255 and is not used: " +
                too_long.substr(0, 200) + "...\n" + no_match(too_long, too_long));
  EXPECT_EQ(report(":::"), no_match("", ""));
  EXPECT_EQ(GetPelCFGInfo(path("r").c_str(), nullptr, SIT_CREATE, SIT_FINAL, SEL_ANY), 0);
  EXPECT_EQ(without_header(read_file(path("r"))), no_match("", "") + "\n==End of Log==\n");
  move_to("/nosuch");
  EXPECT_EQ(report("10.1B"), kTitle + kGone);
  move_to(std::string(245, 'd'));
  EXPECT_EQ(report("10.1B"), kTitle);
  SetVerboseMode(1);
  EXPECT_EQ(report("10.1B"), "VERBOSE: \n**Verbose Mode **\n" + kTitle +
                                 "VERBOSE: ERROR: GetLicenseInfo - path too long\n");
}

TEST_F(Configuration, ResultCodes) {
  EXPECT_EQ(GetPelCFGInfo("", "10.1B", 64, 1, 1), SIT_NO_REPORT_PATH);
  EXPECT_EQ(GetPelCFGInfo(path("r").c_str(), "10.1B", 7, 1, 1), SIT_BAD_OPEN_MODE);
  EXPECT_EQ(GetPelInstFiles(path("r").c_str(), "10.1B", 0, 1, 1), SIT_BAD_OPEN_MODE);
  EXPECT_EQ(GetPelInstFiles(nullptr, "10.1B", 0, 1, 1), SIT_NO_REPORT_PATH);
  pphm = nullptr;
  if (std::filesystem::exists("/usr/bin/pel")) GTEST_SKIP() << "this machine has a launcher";
  EXPECT_EQ(GetPelCFGInfo(path("r").c_str(), "10.1B", 64, 1, 1), 0);
  EXPECT_EQ(GetPelSecurityLog(path("r").c_str(), "10.1B", 64, 1, 1), 0);
  EXPECT_FALSE(std::filesystem::exists(path("r"))) << "nothing to report without installations";
}

TEST_F(Configuration, FilesOfAnInstallation) {
  move_to(path("pel \"1\" $HOME `x`"));
  write_file(dir() + "/sub/file", "");
  const std::string listing = test::run("ls -lLR '" + dir() + "'").output + "\n";
  PHMVER second = record_;
  second.flags = PK_WEBCLIENT;
  record_.next = &second;
  EXPECT_EQ(report("10.1B", SEL_ANY, GetPelInstFiles), listing + listing);
  record_.next = nullptr;
  move_to("/nosuch");
  EXPECT_EQ(report("10.1B", SEL_ANY, GetPelInstFiles), kGone);
  EXPECT_EQ(report("9", SEL_ANY, GetPelInstFiles), no_match("9", "9"));
}

class Monitor : public test::InstallationTest {
 protected:
  void SetUp() override {
    InstallationTest::SetUp();
    delvon_.version = delvon_version_.data();
    delvon_.pelVersion = owner_.data();
    delvon_.flags = PK_MONITOR;
    record_.next = &delvon_;
    init_file_ = path("delvon.ini");
    delvon_.initFile = init_file_.data();
    write_file(path("conf/delvonweb.xml"), "<web/>\n");
    write_file(path("conf/delvon.xml"), "<delvon/>\n");
    write_file(dir() + "/AdminServerPlugins.dat", "plugins\n");
    std::filesystem::create_directory(path("out"));
  }

  int collect(const char* key) {
    std::array<char, SIT_PATH_BYTES> target{};
    path("out").copy(target.data(), target.size());
    std::filesystem::remove(path("r"));
    const int result = GetDelvonFiles(path("r").c_str(), target.data(), key);
    target_ = target.data();
    return result;
  }
  [[nodiscard]] std::string text() const { return without_header(read_file(path("r"))); }
  static std::string copying(const std::string& file) { return "\nCopying " + file + "...\n"; }

  PHMVER delvon_{};
  std::string delvon_version_ = "2.1A01";
  std::string owner_ = "10.1B03";
  std::string init_file_;
  std::string target_;
};

TEST_F(Monitor, FilesAreCopiedIntoAFolderNamedAfterBothVersions) {
  const std::string xml = copying(path("conf/delvonweb.xml")) + copying(path("conf/delvon.xml"));
  for (const std::string& line : {"SET delvonConfigDir=" + path("conf"),
                                  "SET a=b\n  SET delvonConfigDir =   " + path("conf") + "\r\n"}) {
    write_file(init_file_, line);
    EXPECT_EQ(collect("2.1A:10.1B03"), 0);
    EXPECT_EQ(target_, path("out/Delvon21APel101B"));
    EXPECT_EQ(text(),
              copying(init_file_) + xml + copying(dir() + "/AdminServerPlugins.dat") + "\n");
    EXPECT_EQ(read_file(target_ + "/delvon.ini"), line);
    for (const std::string file :
         {"conf/delvon.xml", "conf/delvonweb.xml", "pel/AdminServerPlugins.dat"})
      EXPECT_EQ(read_file(target_ + file.substr(file.find('/'))), read_file(path(file)));
    EXPECT_EQ(collect("2.1A:10.1B03"), EEXIST);
    EXPECT_EQ(text(), "\n");
    EXPECT_STREQ(pc->reportDir, "");
    std::filesystem::remove_all(target_);
  }
}

TEST_F(Monitor, EachMissingPieceIsReported) {
  const std::string skipped = "Skipping copy of delvonweb.xml and delvon.xml.\n\n";
  const std::string no_value = "Cannot find a value for delvonConfigDir. " + skipped;
  const auto missing = [](const std::string& folder) {
    return "\nCannot copy " + folder + "/delvonweb.xml because file does not exist.\n" +
           "\nCannot copy " + folder + "/delvon.xml because file does not exist.\n";
  };
  const std::pair<std::string, std::string> init_files[] = {
      {"SET delvonConfigDir\n", no_value},
      {"SET delvonConfigDir=   \n", no_value},
      {"SET delvonConfigDir=/" + std::string(300, 'x'), missing("/" + std::string(233, 'x'))},
      {"SET other=1\n",
       "Cannot find the delvonConfigDir setting in " + init_file_ + ". " + skipped},
      {"SET delvonConfigDir=/nosuch", missing("/nosuch")}};
  std::filesystem::remove(dir() + "/AdminServerPlugins.dat");
  const std::string no_plugins =
      "(ERROR) Cannot find " + dir() + "/AdminServerPlugins.dat. Skipping file copy.\n\n";
  for (const auto& [content, message] : init_files) {
    write_file(init_file_, content);
    EXPECT_EQ(collect("2.1A:10.1B03"), 0);
    EXPECT_EQ(text(), copying(init_file_) + message + no_plugins + "\n");
    std::filesystem::remove_all(target_);
  }
  std::filesystem::remove(init_file_);
  set_version("10.1B04");
  EXPECT_EQ(collect("2.1A:10.1B03"), 0);
  EXPECT_EQ(text(), "(ERROR)Cannot find " + init_file_ +
                        ". Skipping copy.\n(ERROR) Cannot not find Pelloran version 10.1B03 for "
                        "Delvon 2.1A01\n\n\n");
}

TEST_F(Monitor, ResultCodes) {
  EXPECT_EQ(collect("2.1A:10.1B"), 0);
  EXPECT_EQ(text(), "Could not find Delvon version 2.1A  -> Pelloran version 10.1B\n\n");
  EXPECT_EQ(target_, path("out"));
  std::string target = path("out");
  EXPECT_EQ(GetDelvonFiles(path("r").c_str(), nullptr, "x"), -1);
  EXPECT_EQ(GetDelvonFiles(path("r").c_str(), target.data(), nullptr), -1);
  EXPECT_EQ(GetDelvonFiles(path("no/r").c_str(), target.data(), "x"), ENOENT);
  std::string deep = path("out") + std::string(254 - path("out").size(), '/');
  EXPECT_EQ(GetDelvonFiles(path("r2").c_str(), deep.data(), "2.1A:10.1B03"), ENAMETOOLONG);
  EXPECT_EQ(without_header(read_file(path("r2"))),
            "ERROR: The path of 271 characters is longer than 255 and is not used: " +
                deep.substr(0, 200) + "...\n\n");
  set_environment("TMPDIR", "/proc");
  EXPECT_EQ(GetDelvonFiles(nullptr, target.data(), "x"), SIT_NOT_FOUND);
  set_environment("TMPDIR", path("out").c_str());
  EXPECT_EQ(GetDelvonFiles(nullptr, target.data(), "x"), 0);
  EXPECT_FALSE(std::filesystem::is_empty(path("out"))) << "the temporary report stays";
}

}  // namespace
