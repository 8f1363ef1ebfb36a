// The Java runtimes: their own version output is the finding.
#include "sit/javaver.h"

#include <cstdlib>
#include <string_view>

#include "commfile.h"
#include "commutils/bounded_text.h"
#include "commutils/views.h"
#include "sit/situtil.h"
#include "situtil/command.h"
#include "situtil/path.h"

namespace {

constexpr std::size_t kPrefixLength = 511;
constexpr std::size_t kCommandLength = 1020;
using Script = sit::BoundedText<kPrefixLength + 1>;

struct JavaQuestion {
  const char* heading;
  std::string_view command;
};
constexpr JavaQuestion kQuestions[] = {
    {"JRE Version for %s\n\n", R"( "$JREHOME/bin/$JVMEXE" -version)"},
    {"JDK Version for %s\n\n", R"( "$JDKHOME/bin/$JVMEXE" -version)"},
    {"CLASSPATH Settings for %s\n\n", " echo $CLASSPATH"},
};

bool find_java_env(std::string_view directory, Script& script) noexcept {
  if (!sit::compose(script, "The path", {directory, "/bin/java_env"})) return false;
  if (FileExists(script.c_str()) != 0) return true;
  LogMsg("%s does not exist, cannot determine Java versions for $PHM\n", script.c_str());
  return false;
}

// What the shell must do first to know the installation's Java; nothing without a script.
sit::Command prefix(std::string_view directory, const Script& script,
                    std::size_t max_length) noexcept {
  sit::Command command{max_length};
  if (script.empty()) return command;
  command.raw("PHM=").word(directory).raw(";export PHM; . ").word(script.view()).raw(";");
  return command;
}

void capture_version_in(std::string_view home) noexcept {
  sit::Path java;
  if (!sit::compose(java, "The path", {home, "/bin/java"})) return;
  if (FileExists(java.c_str()) == 0) {
    LogMsg("Java executable %s does not exist\n", java.c_str());
    return;
  }
  sit::Command command;
  command.word(java.view()).raw(" -version").run();
}

}  // namespace

extern "C" {

void getJavaInfo(PHMVER* record) noexcept {
  if (record == nullptr) return;
  const std::string_view directory = sit::text_of(record->dir);
  Script script;
  if (std::getenv("JREHOME") == nullptr &&
      (!find_java_env(directory, script) || !prefix(directory, script, kPrefixLength).fits())) {
    return;
  }
  for (const JavaQuestion& question : kQuestions) {
    sit::log_computed(question.heading, record->version);
    prefix(directory, script, kCommandLength).raw(question.command).run();
    LogMsg("\n");
  }
}

void getJavaInfoSystem() noexcept {
  if (const char* home = std::getenv("JAVA_HOME"); home != nullptr) {
    LogMsg("JAVA_HOME indicates Java is installed in %s\n", home);
    capture_version_in(home);
  } else {
    LogMsg("JAVA_HOME not found.\nAttempting java -version...\n");
    LogCmdOutput("java -version", nullptr);
  }
  LogMsg("\n");
}

}  // extern "C"
