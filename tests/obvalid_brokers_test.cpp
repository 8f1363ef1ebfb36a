// Validation of brokers and the connection manager, and the commands around it.
#include <sys/wait.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <utility>

#include "support/sit_test.h"

namespace {

namespace fs = std::filesystem;
using test::make_tool;
using test::read_file;
using test::repeat;
using test::write_file;

const std::string kHeader = "Configuration Information for x.";

std::string banner(const std::string& type) {
  const std::string rule(86, '#');
  return "\n\n" + rule + "\n#\n# VALIDATION FOR TYPE: " + type + "\n#\n" + rule + "\n";
}

std::string parameter_file(const std::string& name, const std::string& content) {
  const std::string rule = std::string(68, '*') + "\n";
  return "\n" + rule + "* Parameter file: " + name + "\n" + rule + content + "\n\n";
}

class Brokers : public test::InstallationTest {
 protected:
  void SetUp() override {
    InstallationTest::SetUp();
    record_.major = 9;
    write_file(properties(), "brokers\n");
    fs::create_directory(path("copies"));
  }
  [[nodiscard]] std::string properties() const { return dir() + "/properties/obroker.properties"; }
  [[nodiscard]] std::string own() const { return dir() + "/AdminServerPlugins.dat"; }
  void name_location(const std::string& location) {
    write_file(own(), "OBPropMgrPlugin\n" + location + "\n\n");
  }
  std::string validate(int result, const char* plugins = "", const char* broker = nullptr) {
    return written_by([&] {
      EXPECT_EQ(ValidateOB(&record_, plugins, broker, 0, path("copies").c_str()), result);
    });
  }
  std::string check(const std::string& output, int result, const char* type, const char* broker) {
    write_file(path("output"), output);
    make_tool(dir() + "/bin/tool", "cat " + path("output"));
    return written_by([&] {
      EXPECT_EQ(ValidateOBInstance("1", (dir() + "/bin/tool").c_str(), broker, "x", type), result);
    });
  }
  static std::string taken_parameter_files() {
    return test::taken(std::exchange(plistpfname, nullptr));
  }
  [[nodiscard]] std::string startup_missing() const {
    return "\n\nPARAMETER FILES\n===============\n\n" +
           parameter_file("startup.pf",
                          "\nERROR: Could not read " + dir() + "/startup.pf, errno = 2\n");
  }
};

TEST_F(Brokers, LocationOfThePropertiesFile) {
  const std::string skips =
      "INFORMATION: This installation does not use the obroker properties file. Skipping "
      "validation.\n";
  const std::string validates =
      "VALIDATING: " + properties() +
      "\n\n\nINFORMATION: This instalation does not provide any validation script.\n"
      "             Cannot validate Ostrel Broker properties.\n";
  const std::string missing = "ERROR: Could not find Admin Server plugins file: ";
  const std::string found = "Read obroker properties location from Plugins file: " + own() + "\n";
  const std::string warning = "WARNING: Read Plugin file " + own() +
                              " but did not find obroker properties location. Using the "
                              "default.\n\n";
  EXPECT_EQ(validate(10012), missing + own() + "\n");
  EXPECT_EQ(validate(10012, "/nosuch"), missing + "/nosuch\n");
  EXPECT_EQ(validate(10012, record_.pluginsFile), missing + "/nosuch\n");
  EXPECT_EQ(
      validate(10012, dir().c_str()),
      "ERROR: Could not  find the Admin Server plugins file. " + dir() + " is a directory!\n");
  EXPECT_EQ(validate(10017, "/dev/zero"), "ERROR: Could not read file /dev/zero, errno = 22\n");
  name_location(path("o.p"));
  EXPECT_EQ(validate(10011),
            found + "ERROR: Could not find properties file " + path("o.p") + " errno = 2\n");
  EXPECT_STREQ(record_.pluginsFile, own().c_str());
  name_location(dir());
  EXPECT_EQ(validate(10011),
            found + "ERROR: Could not find properties file " + dir() + " errno = 21\n");
  name_location(properties());
  EXPECT_EQ(validate(1), found + validates + startup_missing());
  name_location("pelloran.jar");
  EXPECT_EQ(validate(10000), warning + validates + startup_missing());
  record_.major = 11;
  EXPECT_EQ(validate(0, own().c_str()), validates + startup_missing());
  record_.major = 9;
  fs::remove(properties());
  EXPECT_EQ(validate(10000), warning + skips + startup_missing());
  fs::create_directory(properties());
  EXPECT_EQ(validate(10000), warning + validates + startup_missing()) << "good enough by default";
  record_.major = 8;
  const std::string plugins = own();
  move_to("/" + std::string(240, 'd'));
  EXPECT_EQ(validate(0, plugins.c_str()),
            "ERROR: The path of 271 characters is longer than 254 and is not used: " +
                dir().substr(0, 200) + "...\n" + skips + startup_missing());
}

TEST_F(Brokers, OutputOfCheckTools) {
  const std::string two = kHeader + "one\nworkDir : @{W} (/w/1)\nsrvrStartupParam: -pf a.pf\n\n" +
                          kHeader + "two\nsrvrStartupParam=-p x -pf 'b c.pf' -q\nworkDir: /w/2\n";
  const std::string shown =
      "\n\n" + kHeader + "one\nworkDir : @{W} (/w/1)\nsrvrStartupParam: -pf " + "a.pf\n\n\n" +
      kHeader + "two\nsrvrStartupParam=-p x -pf 'b c.pf' -q\n" + "workDir: /w/2\n";
  const std::string binary{"\x01\0(\xff\n)(\n", 8};
  const std::string longest(254, 'l');
  const std::string two_pieces = "srvrStartupParam: -pf " + std::string(300, 'p') + "\n";
  const struct {
    std::string output;
    int result;
    const char* type;
    const char* broker;
    std::string report;
    std::string files;
  } cases[] = {
      {two, 0, "AP", nullptr, shown, "/w/1/a.pf,/w/2/b c.pf"},
      {kHeader + "one\nworkDir: /w\n" + kHeader + "two\nsrvrStartupParam: -pf b.pf\n", 0, "AP",
       nullptr,
       "\n\n" + kHeader + "one\nworkDir: /w\n\n\n" + kHeader + "two\nsrvrStartupParam: -pf b.pf\n",
       "b.pf"},
      {two, 0, "WP", "", shown, "/w/1/a.pf,/w/2/b c.pf"},
      {two, 0, "AP", "two",
       shown.substr(2, shown.find("\n\n\n") - 1) + shown.substr(shown.rfind("\n\n") + 2),
       "/w/1/b c.pf"},
      {two, 0, "APX", nullptr, shown, "(null)"},
      {two, 0, "ap", nullptr, shown, "(null)"},
      {"a\nCannot find x\nb\n", 0, "AP", nullptr, "a\nCannot find x\nb\n", "(null)"},
      {"a\nCannot find x\nb\n", 10015, "AP", "x", "a\n", "(null)"},
      {"a\nCannot load property p\nCannot find x\n", 10020, "AP", nullptr, "a\n", "(null)"},
      {"Cannot load property p\nCannot find x\nb\n", 10015, "AP", "x", "", "(null)"},
      {"", 0, "AP", nullptr, "", "(null)"},
      {"\n\n no " + kHeader + "x\n", 0, "AP", nullptr, " no " + kHeader + "x\n", "(null)"},
      {binary, 0, "AP", nullptr, binary, "(null)"},
      {repeat(longest, 20) + "\n", 0, "AP", nullptr, repeat(longest, 20), "(null)"},
      {repeat("line %s\n", 100000), 0, "AP", nullptr, repeat("line %s\n", 100000), "(null)"},
      {two_pieces, 0, "AP", nullptr, two_pieces, std::string(254 - 22, 'p')}};
  for (const auto& [output, result, type, broker, report, files] : cases) {
    EXPECT_TRUE(check(output, result, type, broker) == report) << output.substr(0, 300);
    EXPECT_EQ(taken_parameter_files(), files) << output.substr(0, 300);
  }
  EXPECT_EQ(check("", 10015, "AP", std::string(255, 'b').c_str()),
            "ERROR: The broker name of 255 characters is longer than 254 and is not used: " +
                std::string(200, 'b') + "...\n");
  EXPECT_EQ(ValidateOBInstance("1", "", nullptr, nullptr, "AP"), 10000);
  make_tool(dir() + "/bin/a \"$(b)`c`", "printf '<%s>' \"$@\"");
  std::strcpy(obroker, "/it's $HOME");
  EXPECT_EQ(written_by([&] {
              for (const char* broker : {"", "a\"b"}) {
                for (const char* location : {"x", ""}) {
                  const std::string tool = dir() + "/bin/a \"$(b)`c`";
                  EXPECT_EQ(ValidateOBInstance("1", tool.c_str(), broker, location, "DX"), 0);
                }
              }
            }),
            "<-f></it's $HOME><-v><><-v><-name>< a\"b><-f></it's $HOME><-v><-name>< a\"b><><-v>");
}

TEST_F(Brokers, ParameterFilesAndNames) {
  const std::pair<const char*, const char*> values[] = {
      {"x -pf /w/a.pf -db x\n", "/w/a.pf"},
      {"-pf '/my dir/b.pf' -db x\n", "'/my dir/b.pf'"},
      {"-pf a\"b c'd e\n", "a\"b c'"},
      {"-pf \t/a\tb c\n", "\t/a\tb"},
      {"-pf 'open -db x\n", "'open -db x"},
      {"-pf\n", ""},
      {"-pf", ""},
      {"-pf ", ""},
      {"-pf  /a\n", ""},
      {"-pf=a", "a"},
      {"-PF a\n", "(null)"},
      {nullptr, "(null)"}};
  for (const auto& [line, value] : values) EXPECT_EQ(test::taken(GetPFValue(line)), value) << line;

  const char* additions[][3] = {{"/w", nullptr, "(null)"},  {"/w", "a.pf", "/w/a.pf"},
                                {"/x", "'/q.pf'", "/q.pf"}, {"", "\"b\" c\"", "b\" c"},
                                {nullptr, "b.pf", "b.pf"},  {"/w", "'", "/w/"},
                                {"/w", "'/open", "/w/"},    {nullptr, "", ""}};
  for (const auto& [directory, value, list] : additions) {
    Add_pf_name(directory, value);
    EXPECT_EQ(taken_parameter_files(), list) << value;
  }
  for (const char* value : {"/w/ab", "/w/a", "/c", "/w/ab"}) Add_pf_name(nullptr, value);
  EXPECT_EQ(taken_parameter_files(), "/w/ab,/c");

  const std::pair<std::string, std::string> names[] = {
      {kHeader + "beta.gamma \n", "gamma"},
      {kHeader + "b.\n", "b."},
      {"Configuration Information for alpha\n", "alpha"},
      {".", ""},
      {"", ""}};
  for (const auto& [line, name] : names) {
    char buffer[255] = "before";
    EXPECT_EQ(SetObjectName(buffer, line.c_str()), 0);
    EXPECT_EQ(buffer, name) << line;
  }
  SetVerboseMode(1);
  EXPECT_EQ(written_by([] { EXPECT_EQ(test::taken(GetPFValue("x -pf a b\n")), "a"); }),
            "VERBOSE: \n**Verbose Mode **\nVERBOSE: GetPFValue: reading line: x -pf a b\n\n"
            "VERBOSE: GetPFValue: value is : a b\n\nVERBOSE: GetPFValue: before loop\n"
            "VERBOSE: GetPFValue: character a\nVERBOSE: GetPFValue: character  \n"
            "VERBOSE: GetPFValue: after loop string is a b\n\n"
            "VERBOSE: GetPFValue: returning a\n");
  SetVerboseMode(0);
}

TEST_F(Brokers, HungAndFailingToolsDoNotEndTheReport) {
  name_location(properties());
  make_tool(dir() + "/bin/rgconfig",
            "echo begun; until [ -e " + path("go") + " ]; do sleep 1; done");
  make_tool(dir() + "/bin/wpconfig", "echo failed >&2; exit 3");
  make_tool(dir() + "/bin/apconfig", "echo 'Cannot load property p'");
  make_tool(dir() + "/bin/dxconfig", "kill -9 $$");
  write_file(dir() + "/startup.pf", "-q\n");
  EXPECT_EQ(validate(1), "Read obroker properties location from Plugins file: " + own() +
                             "\nVALIDATING: " + properties() + "\n\n" + banner("Registry") +
                             "begun\n" + banner("WP") + "failed\n" + banner("AP") + banner("DX") +
                             "Killed\n\n\nPARAMETER FILES\n===============\n\n" +
                             parameter_file("startup.pf", "-q\n"));
  write_file(path("go"), "");
  EXPECT_GT(::waitpid(-1, nullptr, 0), 0) << "abandoned, not killed";
}

TEST_F(Brokers, OneBrokerIsLookedForUntilFound) {
  name_location(properties());
  make_tool(dir() + "/bin/rgconfig", "echo \"Cannot find$2 in $4\"");
  const std::string pf = "srvrStartupParam: -pf " + path("a.pf") + "\n";
  write_file(path("a.pf"), "-p\n");
  make_tool(dir() + "/bin/apconfig", "echo '" + pf + "'");
  make_tool(dir() + "/bin/wgaconfig", "echo never run");
  const std::string start = "Read obroker properties location from Plugins file: " + own() +
                            "\nVALIDATING: " + properties() + "\n\n";
  EXPECT_EQ(validate(0, "", "one"), start + banner("Registry") + banner("AP") + pf +
                                        startup_missing() + "INFORMATION: " + path("a.pf") +
                                        " lies outside " + dir() + ".\n" +
                                        parameter_file(path("a.pf"), "-p\n"));
  for (const char* tool : {"apconfig", "wgaconfig"}) {
    fs::copy_file(dir() + "/bin/rgconfig", dir() + "/bin/" + tool,
                  fs::copy_options::overwrite_existing);
  }
  EXPECT_EQ(validate(1, "", "one"),
            start + banner("Registry") + banner("AP") + banner("WGA") + startup_missing());
}

TEST_F(Brokers, ValidationCommand) {
  name_location(properties());
  make_tool(dir() + "/bin/dxconfig", "cat " + path("output"));
  write_file(path("output"), kHeader + "one\nlogFile: " + path("one.log") + "\n");
  write_file(path("one.log"), "log\n");
  const auto command = [this](int result, const char* key = "10.1B", int mode = SIT_CREATE) {
    const std::string to = path("copies");
    fs::remove(path("r"));
    EXPECT_EQ(GetOBValidationInfo(to.c_str(), path("r").c_str(), key, mode, 7, "", ""), result);
    return fs::exists(path("r")) ? test::without_header(read_file(path("r"))) : "no report";
  };
  const std::string brokers =
      "Validation of Ostrel Broker properties file\n"
      "===========================================\n\n"
      "Read obroker properties location from Plugins file: " +
      own() + "\nVALIDATING: " + properties() + "\n\n" + banner("DX") + "\n\n" +
      read_file(path("output")) + startup_missing();
  const std::string copying = "\nINFORMATION: Copying " + properties() + " as ";
  const std::string manager =
      "\n\nValidation of Connection Manager properties file\n"
      "================================================\n\n";
  const std::string skips = "INFORMATION: Skipping this validation (dbconfig script not found)\n";
  const std::string end = "\n==End of Log==\n";
  EXPECT_EQ(command(0), brokers + copying + "obroker.properties.101B\n\n" + manager + skips + end);
  EXPECT_EQ(read_file(path("copies/obroker.properties.101B")), "brokers\n");
  EXPECT_EQ(OBCopyFiles(path("r").c_str(), "one", "10.1B", path("copies").c_str()), 1);
  EXPECT_EQ(OBCopyFiles(path("r").c_str(), "one", "10.1b03", path("copies").c_str()), 0);
  EXPECT_EQ(read_file(path("copies/one.log")), "log\n");
  fs::remove_all(path("copies"));
  make_tool(dir() + "/bin/dbconfig", "echo \"$*\"");
  const std::string own_manager = dir() + "/properties/conmgr.properties";
  const std::string copy_failed = "ERROR: Could not copy file, errno = 2\n\n";
  EXPECT_EQ(command(10016),
            brokers + copying + "obroker.properties.101B\n\n" + copy_failed + manager +
                "ERROR: Could not find Connection Manager properties file: " + own_manager + "\n" +
                end);
  write_file(own_manager, "");
  EXPECT_EQ(written_by([&] { EXPECT_EQ(ValidateConMgr(&record_, "", 1, "/nosuch"), 10018); }),
            "VALIDATING: " + own_manager + "\n\n" + own_manager + "\n\nINFORMATION: Copying " +
                own_manager + " as conmgr.properties.101B...\n\n" + copy_failed);
  EXPECT_EQ(written_by([&] { EXPECT_EQ(ValidateConMgr(&record_, dir().c_str(), 0, ""), 10014); }),
            "ERROR: Could not  find the Connection Manager properties file. " + dir() +
                " is a directory!\n");
  for (const char* key : {"10.1", "10.1b", "10.1B03", "10.1B:", "", "7.1", "18.1"}) {
    EXPECT_EQ(command(10013, key), "no report") << key;
  }
  EXPECT_EQ(command(10013, nullptr), "no report");
  EXPECT_EQ(command(10007, "10.1B", 0), "no report");
  set_version("17.1A");
  EXPECT_EQ(command(10013, "17.1A"), "no report");
  EXPECT_EQ(GetOBValidationInfo("", "", "10.1B", SIT_CREATE, 0, "", ""), 10000);
  EXPECT_EQ(OBCopyFiles(path("r").c_str(), "one", nullptr, "/"), -1);
  EXPECT_EQ(OBCopyFiles("/nosuch/r", "one", "1", "/"), 2);
  EXPECT_EQ(OBCopyFiles(nullptr, "one", "1", "/nosuch"), 1);
  EXPECT_EQ(fs::remove_all(temporary()), 2U) << "the report of a call without one stays";
  fs::create_directory(temporary());
}

}  // namespace
