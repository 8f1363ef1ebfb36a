#include <cstdlib>
#include <cstring>

#include "support/sit_test.h"

namespace test {
namespace {

class AdminServer : public InstallationTest {
 protected:
  [[nodiscard]] std::string own_file(int major) const {
    return dir() +
           (major == 9 ? "/AdminServerPlugins.dat" : "/properties/AdminServerPlugins.properties");
  }
};

TEST_F(AdminServer, PluginsFilesAndControlScripts) {
  EXPECT_EQ(GetAdmSrvWrkDir("10.1B03"), nullptr) << "no script";
  expect_rows("obvalid", "plugins", [&](const Row& row) {
    record_.major = static_cast<short>(row.number(0));
    write_file(own_file(record_.major), row.text(1));
    std::strcpy(obroker, "as it was");
    return std::to_string(ReadPlugins(&record_, "")) + " " + obroker;
  });
  expect_rows("obvalid", "work directory", [&](const Row& row) {
    write_file(dir() + "/bin/peladsv", row.text(0));
    std::free(std::exchange(record_.wrkDir, nullptr));
    const std::string found = taken(GetAdmSrvWrkDir("10.1B03"));
    EXPECT_EQ(found, record_.wrkDir == nullptr ? "(null)" : record_.wrkDir);
    return found == "(null)" ? "" : found;
  });
}

TEST_F(AdminServer, OfEachKindAndRelease) {
  char buffer[255];
  set_environment("WRKDIR", "\"odd\"\n");
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
    fs::remove(own_file(major));
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

}  // namespace
}  // namespace test
