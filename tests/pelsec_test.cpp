#include <tuple>

#include "support/sit_test.h"

namespace test {
namespace {

class Security : public InstallationTest {
 protected:
  std::string report(const char* key = "10.1B") {
    fs::remove(path("r"));
    EXPECT_EQ(GetPelSecurityLog(path("r").c_str(), key, SIT_CREATE, 0, SEL_ANY), 0);
    if (!fs::exists(path("r"))) return "(no report)";
    return body_of(path("r"));
  }
  [[nodiscard]] std::string tool(const std::string& name) const { return dir() + "/bin//" + name; }
};

const std::string kCertificates = title("Certificates");
const std::string kKeys = title("Keys");

TEST_F(Security, FormatForEachRelease) {
  using Releases = std::vector<std::tuple<int, int, const char*>>;
  const std::string before =
      kCertificates + "Certificate Store " + dir() + "/certs does not exist\n\n";
  const std::string from = before + kKeys + "Key Store " + dir() + "/keys does not exist\n\n";
  const auto expect = [this](const std::string& text, const Releases& releases) {
    for (const auto& [major, minor, level] : releases) {
      std::string maintenance = level == nullptr ? "" : level;
      record_.major = static_cast<short>(major);
      record_.minor = static_cast<short>(minor);
      record_.maintLevel = level == nullptr ? nullptr : maintenance.data();
      EXPECT_EQ(report(), text) << major << "." << minor << maintenance;
    }
  };
  expect("(no report)", {{8, 3, ""}, {0, 0, ""}});
  expect(before, {{9, 1, "E"}, {10, 0, "A"}, {10, 0, ""}, {10, -1, "5"}, {10, 0, nullptr}});
  expect(from, {{10, 0, "B"}, {10, 0, "a"}, {10, 0, "\xC4"}, {10, 1, "A"}, {11, 0, ""}});
}

TEST_F(Security, BeforeTenB) {
  record_.major = 9;
  write_file(dir() + "/certs/a.0", "first");
  EXPECT_EQ(report(),
            kCertificates + tool("sslc") + " does not exist, cannot list certificates\n\n");
  make_tool(dir() + "/bin/sslc", "echo \"$1 $2 $3:\"; cat \"$4\"; exit 1");
  for (const char* skipped : {"x.10", "x.0.bak", "x.pem", "plain"})
    write_file(dir() + "/certs/" + skipped, "");
  const std::string listing = kCertificates + "Listing of certificates in " + dir() + "/certs\n\n";
  EXPECT_EQ(report(), listing + "Listing of a.0\n\nx509 -text -in:\nfirst\n\n");
  fs::remove(dir() + "/certs/a.0");
  write_file(dir() + "/certs/b; echo $HOME.0", "blank");
  EXPECT_EQ(report(), listing + "Listing of b; echo $HOME.0\n\nx509 -text -in:\nblank\n\n");
  fs::remove_all(dir() + "/certs");
  write_file(dir() + "/certs", "not a directory");
  EXPECT_EQ(report(), listing);
}

TEST_F(Security, FromTenB) {
  record_.major = 11;
  write_file(dir() + "/certs/x", "");
  write_file(dir() + "/keys/x", "");
  EXPECT_EQ(report(), kCertificates + tool("certutil") +
                          " does not exist, cannot list certificates\n" + kKeys + tool("pkiutil") +
                          " does not exist, cannot list keys\n");
}

TEST_F(Security, CommandBeyondItsCapacity) {
  const std::string tool = "/" + std::string(240, 't');
  write_file(path("certs/a.0"), "");
  EXPECT_EQ(written_by([&] { getDirCertInfo(tool.c_str(), path("certs").c_str()); }),
            "Listing of a.0\n\n" +
                too_long("command", tool + " x509 -text -in " + path("certs") + "/a.0") + "\n\n");
  // What quoting adds does not count.
  fs::remove(path("certs/a.0"));
  const std::string name = "a;touch ran;" + std::string(125, '$') + ".0";
  write_file(path("certs/" + name), "shown");
  make_tool(path("t"), "cat \"$4\"");
  EXPECT_EQ(written_by([&] { getDirCertInfo(path("t").c_str(), path("certs").c_str()); }),
            "Listing of " + name + "\n\nshown\n\n");
  EXPECT_FALSE(fs::exists("ran"));
  record_.major = 11;
  move_to(path(std::string(235 - path("").size(), 'd') + " d"));
  write_file(dir() + "/certs/x", "");
  write_file(dir() + "/bin/certutil", "");
  EXPECT_THAT(report(), HasSubstr("\n\nERROR: The command of "));
  move_to("/" + std::string(244, 'd'));
  EXPECT_THAT(report(), Not(HasSubstr("ERROR"))) << "without a store no tool is looked for";
}

TEST_F(Security, ResultCodes) {
  record_.major = 9;
  EXPECT_EQ(GetPelSecurityLog(path("no/r").c_str(), "10.1B", 64, 0, SEL_ANY), ENOENT);
  EXPECT_EQ(GetPelSecurityLog(path("r").c_str(), "9", 0, 0, SEL_ANY), 0);
  EXPECT_EQ(report("9:x"), "Could not find any installation that matches 9 x \n");
  PHMVER unreported = record_;
  unreported.major = 8;
  record_.next = &unreported;
  EXPECT_EQ(GetPelSecurityLog(path("no/r").c_str(), "10.1B", 64, 0, SEL_ANY), ENOENT);
}

}  // namespace
}  // namespace test
