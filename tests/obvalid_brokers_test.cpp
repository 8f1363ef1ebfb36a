// Validation of brokers and the connection manager, and the commands around it.
#include <sys/wait.h>

#include <cstring>
#include <utility>

#include "support/sit_test.h"

namespace test {
namespace {

const std::string kHeader = "Configuration Information for x.";

std::string banner(const std::string& type) {
  const std::string rule(86, '#');
  return "\n\n" + rule + "\n#\n# VALIDATION FOR TYPE: " + type + "\n#\n" + rule + "\n";
}

std::string parameter_file(const std::string& name, const std::string& content) {
  const std::string rule = std::string(68, '*') + "\n";
  return "\n" + rule + "* Parameter file: " + name + "\n" + rule + content + "\n\n";
}

class Brokers : public InstallationTest {
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
  [[nodiscard]] std::string start() const {
    return "Read obroker properties location from Plugins file: " + own() +
           "\nVALIDATING: " + properties() + "\n\n";
  }
  std::string validate(int result, const char* plugins = "", const char* broker = nullptr,
                       int copy = 0) {
    return written_by([&] {
      EXPECT_EQ(ValidateOB(&record_, plugins, broker, copy, path("copies").c_str()), result);
    });
  }
  static std::string taken_parameter_files() { return taken(std::exchange(plistpfname, nullptr)); }
  [[nodiscard]] std::string startup_missing() const {
    return "\n\nPARAMETER FILES\n===============\n\n" +
           parameter_file("startup.pf",
                          "\nERROR: Could not read " + dir() + "/startup.pf, errno = 2\n");
  }
};

TEST_F(Brokers, LocationOfThePropertiesFile) {
  expect_rows("obvalid", "location", [&](const Row& row) {
    record_.major = static_cast<short>(row.number(0));
    if (row[2] != nullptr) name_location(row[2]);
    fs::remove_all(properties());
    if (row.text(3) == "file") write_file(properties(), "brokers\n");
    if (row.text(3) == "folder") fs::create_directory(properties());
    const char* named = row.text(1) == "same" ? record_.pluginsFile : row[1];
    int result = -1;
    std::string report = written_by(
        [&] { result = ValidateOB(&record_, named, nullptr, 0, path("copies").c_str()); });
    if (report.ends_with(startup_missing())) {
      report.replace(report.size() - startup_missing().size(), std::string::npos, "and startup.pf");
    }
    return std::to_string(result) + " " + report;
  });
  record_.major = 8;
  const std::string plugins = own();
  move_to("/" + std::string(240, 'd'));
  const std::string unused =
      "INFORMATION: This installation does not use the obroker properties file. ";
  EXPECT_EQ(validate(0, plugins.c_str(), nullptr, 1),
            too_long("path", dir() + "/properties/obroker.properties", 254) + unused +
                "Skipping validation.\n" + startup_missing() + unused + "Skipping file copy\n");
}

TEST_F(Brokers, OutputOfCheckTools) {
  const std::string tool = dir() + "/bin/a \"$(b)`c`";
  make_tool(tool, "cat " + path("output"));
  expect_rows("obvalid", "check", [&](const Row& row) {
    write_file(path("output"), row.text(2));
    int result = -1;
    const std::string report =
        written_by([&] { result = ValidateOBInstance("1", tool.c_str(), row[1], "x", row[0]); });
    return std::to_string(result) + " " + report + taken_parameter_files();
  });
  EXPECT_EQ(ValidateOBInstance("1", "", nullptr, nullptr, "AP"), 10000);
  make_tool(tool, "printf '<%s>' \"$@\"");
  std::strcpy(obroker, "/it's $HOME");
  EXPECT_EQ(written_by([&] {
              for (const char* broker : {"", "a\"b"}) {
                for (const char* location : {"x", ""}) {
                  EXPECT_EQ(ValidateOBInstance("1", tool.c_str(), broker, location, "DX"), 0);
                }
              }
            }),
            "<-f></it's $HOME><-v><><-v><-name>< a\"b><-f></it's $HOME><-v><-name>< a\"b><><-v>");
}

TEST_F(Brokers, ParameterFilesAndNames) {
  expect_rows("obvalid", "parameter", [](const Row& row) { return taken(GetPFValue(row[0])); });
  expect_rows("obvalid", "list", [](const Row& row) {
    Add_pf_name(row[0], row[1]);
    return taken_parameter_files();
  });
  expect_rows("obvalid", "name", [](const Row& row) {
    char buffer[255] = "before";
    const int result = SetObjectName(buffer, row[0]);
    return std::to_string(result) + " " + buffer;
  });
  for (const char* value : {"/w/ab", "/w/a", "/c", "/w/ab"}) Add_pf_name(nullptr, value);
  EXPECT_EQ(taken_parameter_files(), "/w/ab,/c");
}

TEST_F(Brokers, HungAndFailingToolsDoNotEndTheReport) {
  name_location(properties());
  make_tool(dir() + "/bin/rgconfig",
            "echo begun; until [ -e " + path("go") + " ]; do sleep 1; done");
  make_tool(dir() + "/bin/wpconfig", "echo failed >&2; exit 3");
  make_tool(dir() + "/bin/apconfig", "echo 'Cannot load property p'");
  make_tool(dir() + "/bin/dxconfig", "kill -9 $$");
  write_file(dir() + "/startup.pf", "-q\n");
  EXPECT_EQ(validate(1), start() + banner("Registry") + "begun\n" + banner("WP") + "failed\n" +
                             banner("AP") + banner("DX") +
                             "Killed\n\n\nPARAMETER FILES\n===============\n\n" +
                             parameter_file("startup.pf", "-q\n"));
  write_file(path("go"), "");
  EXPECT_GT(::waitpid(-1, nullptr, 0), 0) << "abandoned, not killed";
}

TEST_F(Brokers, OneBrokerIsLookedForUntilFound) {
  name_location(properties());
  make_tool(dir() + "/bin/rgconfig", "echo \"Cannot find$2 in $4\"");
  Add_pf_name("/left", "over.pf");
  const std::string pf = "srvrStartupParam: -pf " + path("a.pf") + "\n";
  write_file(path("a.pf"), "-p\n");
  make_tool(dir() + "/bin/apconfig", "echo '" + pf + "'");
  make_tool(dir() + "/bin/wgaconfig", "echo never run");
  EXPECT_EQ(validate(0, "", "one"), start() + banner("Registry") + banner("AP") + pf +
                                        startup_missing() + "INFORMATION: " + path("a.pf") +
                                        " lies outside " + dir() + ".\n" +
                                        parameter_file(path("a.pf"), "-p\n"));
  for (const char* tool : {"apconfig", "wgaconfig"}) {
    fs::copy_file(dir() + "/bin/rgconfig", dir() + "/bin/" + tool,
                  fs::copy_options::overwrite_existing);
  }
  EXPECT_EQ(validate(1, "", "one"),
            start() + banner("Registry") + banner("AP") + banner("WGA") + startup_missing());
}

TEST_F(Brokers, ValidationCommand) {
  name_location(properties());
  make_tool(dir() + "/bin/dxconfig", "cat " + path("output"));
  write_file(path("output"), kHeader + "one\nlogFile: " + path("one.log") + "\n");
  write_file(path("one.log"), "log\n");
  const auto command = [this](int result, const char* key = "10.1B", int mode = SIT_CREATE) {
    fs::remove(path("r"));
    EXPECT_EQ(GetOBValidationInfo(path("copies").c_str(), path("r").c_str(), key, mode, 7, "", ""),
              result);
    return fs::exists(path("r")) ? without_header(read_file(path("r"))) : "no report";
  };
  const std::string copying =
      "\nINFORMATION: Copying " + properties() + " as obroker.properties.101B\n\n";
  const std::string manager = "\n\n" + title("Validation of Connection Manager properties file");
  const std::string end = "\n==End of Log==\n";
  EXPECT_THAT(
      command(0),
      EndsWith(startup_missing() + copying + manager +
               "INFORMATION: Skipping this validation (dbconfig script not found)\n" + end));
  EXPECT_EQ(read_file(path("copies/obroker.properties.101B")), "brokers\n");
  EXPECT_EQ(OBCopyFiles(path("r").c_str(), "one", "10.1B", path("copies").c_str()), 1);
  EXPECT_EQ(OBCopyFiles(path("r").c_str(), "one", "10.1b03", path("copies").c_str()), 0);
  EXPECT_EQ(read_file(path("copies/one.log")), "log\n");
  make_tool(dir() + "/bin/dbconfig", "echo \"$*\"");
  const std::string own_manager = dir() + "/properties/conmgr.properties";
  const std::string copy_failed = "ERROR: Could not copy file, errno = 2\n\n";
  const std::string no_manager =
      manager + "ERROR: Could not find Connection Manager properties file: " + own_manager + "\n" +
      end;
  EXPECT_THAT(command(10016), EndsWith(copying + no_manager));
  fs::remove_all(path("copies"));
  EXPECT_THAT(command(10016), EndsWith(copying + copy_failed + no_manager));
  validate(10018, "", nullptr, 1);
  write_file(own_manager, "");
  EXPECT_EQ(ValidateConMgr(&record_, "", 0, "/nosuch"), 0);
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
  EXPECT_EQ(OBCopyFiles(nullptr, "one", "1", "/nosuch"), 1);
  EXPECT_EQ(fs::remove_all(temporary()), 2U) << "the report of a call without one stays";
  fs::create_directory(temporary());
}

}  // namespace
}  // namespace test
