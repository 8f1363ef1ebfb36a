// What is handed on: what README shows, what an installed sit gives a program, what shells
// complete.
#include "support/sit_test.h"

namespace test {
namespace {

class HandingOn : public SitTest {
 protected:
  void SetUp() override {
    SitTest::SetUp();
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "programs of others have no sanitizers";
#endif
  }
  void install() const {
    ASSERT_EQ(run("cmake --install " BUILD " --prefix " + path("usr") + " 2>&1").status, 0);
  }
  // A block of README in this language, which begins with this line.
  [[nodiscard]] static std::string example(const std::string& language, const std::string& start) {
    const std::string text = read_file(SOURCE "/README.md");
    const std::size_t begin = text.find("```" + language + "\n" + start);
    if (begin == std::string::npos) return "";
    const std::size_t code = begin + 4 + language.size();
    return text.substr(code, text.find("```", code) - code);
  }
};

TEST_F(HandingOn, ExamplesOfReadmeRunAndSayWhyLoadingFails) {
  install();
  write_file(path("example.c"), example("c", "#include <dlfcn.h>"));
  write_file(path("example.py"), example("python", "import ctypes"));
  ASSERT_EQ(
      run("cd " + path("") + " && cc -Wall -Werror -Iusr/include example.c -o example 2>&1").output,
      "");
  const std::string with = "cd " + path("") + " && LD_LIBRARY_PATH=$(echo usr/lib*) ";
  for (const std::string program : {"./example", "python3 example.py"}) {
    Ran ran = run(with + program + " 2>&1");
    EXPECT_EQ(ran.status, 0) << program << ran.output;
    EXPECT_THAT(read_file("/tmp/report.txt"), EndsWith("==End of Log==\n")) << program;
    fs::remove("/tmp/report.txt");
    ran = run("cd " + path("") + " && LD_LIBRARY_PATH= " + program + " 2>&1");
    EXPECT_EQ(ran.status, 1) << program;
    EXPECT_THAT(ran.output, HasSubstr("libsit.so")) << program;
  }
}

TEST_F(HandingOn, InstalledLibraryIsFoundByCMakeAndPkgConfig) {
  install();
  const std::string libraries = run("echo " + path("usr") + "/lib*").output;
  const std::string folder = libraries.substr(0, libraries.find('\n'));
  const std::string with = "cd " + path("") + " && export PKG_CONFIG_PATH=" + folder +
                           "/pkgconfig LD_LIBRARY_PATH=" + folder + " && ";
  EXPECT_EQ(run(with + "cmake -S " SOURCE "/tests/consumer -B b -DCMAKE_PREFIX_PATH=" +
                path("usr") + " >/dev/null 2>&1 && cmake --build b >/dev/null && b/consumer")
                .output,
            "11.6\n");
  EXPECT_EQ(
      run(with + "cc " SOURCE "/tests/consumer/consumer.c $(pkg-config --define-variable=prefix=" +
          path("usr") + " --cflags --libs sit) -o c && ./c")
          .output,
      "11.6\n");
  EXPECT_EQ(run(path("usr/bin/sit") + " --version").output, "sit 11.6\n");
  EXPECT_EQ(run("readelf -d " + folder + "/libsit.so | grep -o 'soname: .*'").output,
            "soname: [libsit.so.11]\n");
}

TEST_F(HandingOn, ShellsComplete) {
  for (const std::string shell : {"bash", "zsh", "fish"}) {
    run(HOST " --completion " + shell + " > " + path(shell));
    if (run("command -v " + shell).status != 0) continue;
    EXPECT_EQ(run(shell + " -n " + path(shell) + " 2>&1").output, "");
  }
  const std::pair<std::string, std::string> cases[] = {{"sit co", "collect"},
                                                       {"sit collect --only sec", "security"},
                                                       {"sit collect --max-t", "--max-total"},
                                                       {"sit diff --ru", "--rules"},
                                                       {"sit call GetSys", "GetSysInfo"}};
  for (const auto& [line, completed] : cases) {
    EXPECT_EQ(run("bash -c '. " + path("bash") + "; COMP_WORDS=(" + line +
                  "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _sit; echo ${COMPREPLY[*]}'")
                  .output,
              completed + "\n");
  }
  if (run("command -v fish").status != 0) return;
  EXPECT_THAT(
      run("fish -c 'source " + path("fish") + "; complete -C \"sit collect --skip sec\"'").output,
      HasSubstr("security"));
}

}  // namespace
}  // namespace test
