#include <cstdlib>
#include <cstring>

#include "support/sit_test.h"

namespace {

using test::write_file;

const std::string kSection = "[Plugin.OBPropMgr]\n";
const std::string kBlock = "OBPropMgrPlugin\n";

class AdminServer : public test::InstallationTest {
 protected:
  [[nodiscard]] std::string own_file(int major) const {
    return dir() +
           (major == 9 ? "/AdminServerPlugins.dat" : "/properties/AdminServerPlugins.properties");
  }
  // Reads the installation's own file, which holds `content`; an empty location stands for none.
  void expect_location(const std::string& content, const std::string& location,
                       const std::string& report = "") {
    record_.major = content.find("pluginargs") == std::string::npos ? 9 : 10;
    write_file(own_file(record_.major), content);
    std::strcpy(obroker, "as it was");
    const int result = location.empty() ? OB_NO_LOCATION : OB_LOCATION_FOUND;
    EXPECT_EQ(written_by([&] { EXPECT_EQ(ReadPlugins(&record_, ""), result); }), report);
    EXPECT_EQ(obroker, location.empty() ? "as it was" : location) << content;
  }
};

TEST_F(AdminServer, LocationInEachPluginsFormat) {
  const std::string full = "#" + std::string(253, 'x');
  for (const auto& [content, location] : std::initializer_list<std::pair<std::string, std::string>>{
           {"x\n\n" + kSection + "#pluginargs= /no\na=b\npluginargs= /o.p,1,2\n\n", "/o.p"},
           {kSection + "pluginargs=\t/a\n  pluginargs= /b\r\n\npluginargs= /c\n\n", "= /b\r"},
           {"[Plugin.OBPropMgr]pluginargs=/a\n\n", "opMgr]pluginargs=/a"},
           {full + kSection + "pluginargs= /a," + full + "\n\n", "/a"},
           {kSection + "pluginargs= /a\n\r\n", ""},
           {kSection + "pluginargs=\n\n", ""},
           {"[plugin.obpropmgr]\npluginargs= /a\n\n", ""},
           {"other\n\n" + kBlock + "com.Class\n#/no\n/o.p\n#\n\n/x\n", "/o.p"},
           {full + "OBPropMgrPluginX\r\n\n/o.p\n\n", "OBPropMgrPluginX\r"},
           {kBlock + std::string("/o\0p\n\n", 6), "/o"},
           {kBlock + "com.Class\npelloran.jar\n\n", ""},
           {kBlock + "pelloran.zip,/o.p\n\n", ""},
           {kBlock + "/o.p\n", ""},
           {" " + kBlock + "/o.p\n\n", ""}}) {
    expect_location(content, location);
  }
  // Of a line longer than a piece the rest counts as a line, even if it is but the line's end.
  expect_location(kBlock + "x" + full.substr(1) + "#x\n\n", "x" + full.substr(1));
  for (const std::size_t length : {253U, 254U, 255U, 256U, 300U}) {
    const std::string path(length, 'p');
    const std::string section = kSection + "pluginargs= " + path.substr(12) + "\n";
    expect_location(kBlock + path + "\n\n", path.substr(length <= 254 ? 0 : 254));
    expect_location(section + "\n", path.substr(12, 254 - 12));
    expect_location(section, length == 254 ? path.substr(12) : "");
  }
  SetVerboseMode(1);
  expect_location(full + "y\nz", "",
                  "VERBOSE: \n**Verbose Mode **\nVERBOSE: Read ****: " + full +
                      "VERBOSE: Read ****: y\nVERBOSE: Read ****: z");
  SetVerboseMode(0);
}

TEST_F(AdminServer, OfEachKindAndRelease) {
  char buffer[255];
  test::set_environment("WRKDIR", "\"odd\"\n");
  for (const int major : {8, 9, 10, 11}) {
    record_.major = static_cast<short>(major);
    const int unreadable = major == 9 || major == 10 ? SIT_PLUGINS_UNREADABLE : 0;
    for (const char* file : {"/nosuch", "/dev/zero", "", static_cast<const char*>(nullptr)}) {
      EXPECT_EQ(ReadPlugins(&record_, file), unreadable) << major;
    }
    EXPECT_EQ(FindAdminServer("10.1B03"), 0) << "it has no plugins file";
    write_file(own_file(major), "");
    for (const unsigned kind : {1U, 2U, 4U, 8U, 64U, 65U, 0U}) {
      record_.flags = kind;
      const bool has_file = major > 8 && (kind & 7U) == 0;
      GetAdminServerPluginsFile(&record_, buffer);
      EXPECT_EQ(buffer, has_file ? own_file(major) : "") << kind;
      EXPECT_EQ(FindAdminServer("10.1b03"), has_file ? 1 : 0) << major << " " << kind;
      EXPECT_EQ(GetAdmSrvWrkDir("10.1b03") == std::getenv("WRKDIR"), kind % 64 == 0) << kind;
    }
    std::filesystem::remove(own_file(major));
  }
  write_file(own_file(11), "");
  record_.bitness = 64;
  EXPECT_STREQ(record_.wrkDir, "\"odd\"\n");
  EXPECT_NE(record_.wrkDir, std::getenv("WRKDIR"));
  for (const char* version : {"10.1B03", "10.1B"}) {  // of another bitness, and another version
    EXPECT_EQ(FindAdminServer(version), 0);
    EXPECT_EQ(GetAdmSrvWrkDir(version), nullptr);
    record_.bitness = 0;
  }
}

TEST_F(AdminServer, WorkDirectoryFromTheControlScript) {
  test::set_environment("WRKDIR", nullptr);
  const std::string quoted = "\"" + dir() + "\"";
  const std::string line = "\"$WRKDIR\" " + quoted;
  const std::string blanks(254 - line.size(), ' ');
  EXPECT_EQ(GetAdmSrvWrkDir("10.1B03"), nullptr) << "no script";
  const std::pair<std::string, bool> cases[] = {
      {"#!/bin/sh\nif [ -n \"$WRKDIR\" \"/nosuch\" " + quoted, true},
      {"\"$WRKDIR\"=\"\"\"$X\" " + quoted + "/\"", true},
      {blanks + line + " # and so on\n", true},
      {blanks + " " + line + "\n", false},
      {"\"$WRKDIR\" \"/nosuch" + quoted + "/nosuch\"", false},
      {"\"$WRKDIR\"" + quoted, false},
      {"\"$WRKDIR\" /tmp\n" + line, false},
      {"\"$WRKDIR\" \"/nosuch\" \"" + dir() + "\n", false},
      {"$WRKDIR \"$wrkdir\" " + quoted, false}};
  for (const auto& [content, is_found] : cases) {
    write_file(dir() + "/bin/peladsv", content);
    std::free(std::exchange(record_.wrkDir, nullptr));
    std::string found;
    EXPECT_EQ(written_by([&] { found = test::taken(GetAdmSrvWrkDir("10.1B03")); }), "");
    EXPECT_EQ(found, is_found ? dir() : "(null)") << content;
    EXPECT_EQ(record_.wrkDir == nullptr ? "" : record_.wrkDir, is_found ? dir() : "") << content;
  }
}

}  // namespace
