#include <cstdlib>
#include <tuple>

#include "support/sit_test.h"

namespace test {
namespace {

class Java : public InstallationTest {
 protected:
  // A program that says how it was called.
  static void put_java(const std::string& file) { make_tool(file, "echo \"$0 $*\" PHM=$PHM >&2"); }
  void expect_versions(const std::string& expected) {
    EXPECT_EQ(written_by([] { EXPECT_EQ(GetJavaVers(nullptr, 0, 0), 0); }),
              "\n\nJava Versions\n=============\n\n" + expected)
        << record_.flags;
  }
  [[nodiscard]] std::string missing() const {
    return dir() + "/bin/java_env does not exist, cannot determine Java versions for $PHM\n";
  }
};

TEST_F(Java, OfTheInstallationsOwnScript) {
  expect_versions(missing());
  write_file(dir() + "/bin/java_env",
             "JREHOME=$PHM/jre JDKHOME=$PHM/jdk JVMEXE=java CLASSPATH='a b:c'\n");
  put_java(dir() + "/jre/bin/java");
  set_environment("JDKHOME", "/nosuch");  // which the script changes
  expect_versions("JRE Version for 10.1B03\n\n" + dir() + "/jre/bin/java -version PHM=" + dir() +
                  "\n\nJDK Version for 10.1B03\n\nsh: 1: " + dir() +
                  "/jdk/bin/java: not found\n\nCLASSPATH Settings for 10.1B03\n\na b:c\n\n");
}

TEST_F(Java, OfTheEnvironment) {
  move_to("/nosuch");
  put_java(path("jre/bin/exe"));
  for (const char* variable : {"JREHOME", "JDKHOME"})
    set_environment(variable, path("jre").c_str());
  set_environment("JVMEXE", "exe");
  set_environment("CLASSPATH", "classes");
  const std::string said = " Version for 10.1B03\n\n" + path("jre/bin/exe") + " -version PHM=\n\n";
  expect_versions("JRE" + said + "JDK" + said + "CLASSPATH Settings for 10.1B03\n\nclasses\n\n");
}

TEST_F(Java, PathsBeyondTheirCapacity) {
  move_to("/" + std::string(600, 'x'));
  expect_versions(too_long("path", dir() + "/bin/java_env", 511));
  move_to(path(std::string(200, 'd') + "/" + std::string(44 - path("").size(), 'd')));
  write_file(dir() + "/bin/java_env", "");
  expect_versions(
      too_long("command", "PHM=" + dir() + ";export PHM; . " + dir() + "/bin/java_env;", 511));
}

TEST_F(Java, WhichInstallationsAreAsked) {
  const std::tuple<const char*, unsigned, bool> cases[] = {{"8.3B", 0, false},
                                                           {"10.8", 0, true},
                                                           {"8", 0, true},
                                                           {"10.1", PK_WEBCLIENT, false},
                                                           {"10.1", PK_FRAMEWORK, false},
                                                           {"2.1", PK_MONITOR, false},
                                                           {"10.1", PK_EXTRA, true}};
  for (const auto& [version, flags, asked] : cases) {
    set_version(version);
    record_.flags = flags;
    expect_versions(asked ? missing() : "");
  }
  record_.version = nullptr;
  record_.flags = 0;
  expect_versions(missing());
}

TEST_F(Java, OfTheMachine) {
  SetPelloranIndependent(1);
  const std::string home = "JAVA_HOME indicates Java is installed in ";
  const std::string java = path("jdk/bin/java");
  set_environment("JAVA_HOME", path("jdk").c_str());
  expect_versions(home + path("jdk") + "\nJava executable " + java + " does not exist\n\n");
  put_java(java);
  expect_versions(home + path("jdk") + "\n" + java + " -version PHM=\n\n");
  set_environment("JAVA_HOME", std::string(5000, 'j').c_str());
  expect_versions(home + std::string(4054, 'j') +
                  too_long("path", std::string(5000, 'j') + "/bin/java") + "\n");
  set_environment("JAVA_HOME", nullptr);
  const std::string old_path = std::getenv("PATH");
  set_environment("PATH", (path("jdk/bin") + ":" + old_path).c_str());
  expect_versions("JAVA_HOME not found.\nAttempting java -version...\n" + java +
                  " -version PHM=\n\n");
  set_environment("PATH", old_path.c_str());
}

}  // namespace
}  // namespace test
