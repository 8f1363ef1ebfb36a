#include <cstdlib>
#include <filesystem>

#include "support/sit_test.h"

namespace {

using test::set_environment;
using test::write_file;

class Java : public test::SitTest {
 protected:
  void SetUp() override {
    SitTest::SetUp();
    record_.version = version_.data();
    record_.dir = directory_.data();
  }

  // A program that says how it was called.
  static void put_java(const std::string& file) {
    write_file(file, "#!/bin/sh\necho \"$0 $*\" PHM=$PHM >&2\n");
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
  }
  void move_installation(const std::string& directory) {
    directory_ = directory;
    record_.dir = directory_.data();
  }
  std::string java_versions() {
    pphm = &record_;
    const std::string text = written_by([] { EXPECT_EQ(GetJavaVers(nullptr, 0, 0), 0); });
    pphm = nullptr;
    const std::string title = "\n\nJava Versions\n=============\n\n";
    EXPECT_TRUE(text.starts_with(title)) << text;
    return text.substr(title.size());
  }

  PHMVER record_{};
  std::string version_ = "10.1B03";
  std::string directory_ = "/nosuch";
};

TEST_F(Java, OfTheInstallationsOwnScript) {
  SIT_Initiate();
  move_installation(path("pel"));
  EXPECT_EQ(java_versions(),
            directory_ + "/bin/java_env does not exist, cannot determine Java versions for $PHM\n");
  write_file(directory_ + "/bin/java_env",
             "JREHOME=$PHM/jre JDKHOME=$PHM/jdk JVMEXE=java CLASSPATH='a b:c'\n");
  put_java(directory_ + "/jre/bin/java");
  EXPECT_EQ(java_versions(), "JRE Version for 10.1B03\n\n" + directory_ +
                                 "/jre/bin/java -version PHM=" + directory_ +
                                 "\n\nJDK Version for 10.1B03\n\nsh: 1: " + directory_ +
                                 "/jdk/bin/java: not found\n\nCLASSPATH Settings for 10.1B03\n\n"
                                 "a b:c\n\n");
}

TEST_F(Java, OfTheEnvironment) {
  SIT_Initiate();
  put_java(path("jre/bin/exe"));
  set_environment("JREHOME", path("jre").c_str());
  set_environment("JDKHOME", path("jre").c_str());
  set_environment("JVMEXE", "exe");
  set_environment("CLASSPATH", "classes");
  const std::string said = path("jre/bin/exe") + " -version PHM=\n\n";
  EXPECT_EQ(java_versions(), "JRE Version for 10.1B03\n\n" + said + "JDK Version for 10.1B03\n\n" +
                                 said + "CLASSPATH Settings for 10.1B03\n\nclasses\n\n");
}

TEST_F(Java, PathsBeyondTheirCapacity) {
  SIT_Initiate();
  move_installation("/" + std::string(600, 'x'));
  EXPECT_EQ(java_versions(),
            "ERROR: The path of 614 characters is longer than 511 and is not used: /" +
                std::string(199, 'x') + "...\n");
  std::string deep = path("d");
  while (deep.size() < 245)
    deep += "/" + std::string(std::min<std::size_t>(200, 245 - deep.size()), 'd');
  move_installation(deep);
  write_file(directory_ + "/bin/java_env", "");
  const std::string command =
      "PHM=" + directory_ + ";export PHM; . " + directory_ + "/bin/java_env;";
  EXPECT_EQ(java_versions(), "ERROR: The command of " + std::to_string(command.size()) +
                                 " characters is longer than 511 and is not used: " +
                                 command.substr(0, 200) + "...\n");
}

TEST_F(Java, WhichInstallationsAreAsked) {
  SIT_Initiate();
  const std::string missing =
      "/nosuch/bin/java_env does not exist, cannot determine Java versions for $PHM\n";
  struct Kind {
    const char* version;
    unsigned flags;
    bool asked;
  };
  for (const auto& [version, flags, asked] : {Kind{"8.3B", 0, false},
                                              {"10.8", 0, true},
                                              {"8", 0, true},
                                              {"10.1", PK_WEBCLIENT, false},
                                              {"10.1", PK_FRAMEWORK, false},
                                              {"2.1", PK_MONITOR, false},
                                              {"10.1", PK_EXTRA, true}}) {
    version_ = version;
    record_.version = version_.data();
    record_.flags = flags;
    EXPECT_EQ(java_versions(), asked ? missing : "") << version << " " << flags;
  }
  record_.version = nullptr;
  record_.flags = 0;
  EXPECT_EQ(java_versions(), missing);
}

TEST_F(Java, OfTheMachine) {
  SIT_Initiate();
  SetPelloranIndependent(1);
  set_environment("JAVA_HOME", path("jdk").c_str());
  const std::string home = "JAVA_HOME indicates Java is installed in " + path("jdk") + "\n";
  EXPECT_EQ(java_versions(),
            home + "Java executable " + path("jdk/bin/java") + " does not exist\n\n");
  put_java(path("jdk/bin/java"));
  EXPECT_EQ(java_versions(), home + path("jdk/bin/java") + " -version PHM=\n\n");
  set_environment("JAVA_HOME", std::string(5000, 'j').c_str());
  EXPECT_EQ(java_versions(), "JAVA_HOME indicates Java is installed in " + std::string(4054, 'j') +
                                 "ERROR: The path of 5009 characters is longer than 255 "
                                 "and is not used: " +
                                 std::string(200, 'j') + "...\n\n");
  set_environment("JAVA_HOME", nullptr);
  const char* inherited = std::getenv("PATH");
  const std::string old_path = inherited == nullptr ? "/usr/bin" : inherited;
  set_environment("PATH", (path("jdk/bin") + ":" + old_path).c_str());
  EXPECT_EQ(java_versions(), "JAVA_HOME not found.\nAttempting java -version...\n" +
                                 path("jdk/bin/java") + " -version PHM=\n\n");
  set_environment("PATH", old_path.c_str());
}

}  // namespace
