// The Java runtimes: their own version output is the finding.
#include "sit/javaver.h"

#include <cstdlib>
#include <string_view>

#include "commfile.h"
#include "commutils/bounded_text.h"
#include "commutils/views.h"
#include "sit/situtil.h"
#include "situtil/path.h"
#include "situtil/shell.h"

namespace {

using Prefix = sit::BoundedText<512>;

struct JavaQuestion {
  const char* heading;
  std::string_view command;
};
constexpr JavaQuestion kQuestions[] = {
    {"JRE Version for %s\n\n", R"( "$JREHOME/bin/$JVMEXE" -version)"},
    {"JDK Version for %s\n\n", R"( "$JDKHOME/bin/$JVMEXE" -version)"},
    {"CLASSPATH Settings for %s\n\n", " echo $CLASSPATH"},
};

// What the shell must do first to know the installation's Java. False when it cannot.
bool source_java_env(std::string_view directory, sit::CommandLine& prefix) noexcept {
  Prefix script;
  if (!sit::compose(script, "The path", {directory, "/bin/java_env"})) return false;
  if (FileExists(script.c_str()) == 0) {
    LogMsg("%s does not exist, cannot determine Java versions for $PHM\n", script.c_str());
    return false;
  }
  Prefix stated;
  return sit::compose(stated, "The command",
                      {"PHM=", directory, ";export PHM; . ", script.view(), ";"}) &&
         prefix.append("PHM=") && sit::append_word(prefix, directory) &&
         prefix.append(";export PHM; . ") && sit::append_word(prefix, script.view()) &&
         prefix.append(";");
}

void capture_version_in(std::string_view home) noexcept {
  sit::Path java;
  if (!sit::compose(java, "The path", {home, "/bin/java"})) return;
  if (FileExists(java.c_str()) == 0) {
    LogMsg("Java executable %s does not exist\n", java.c_str());
    return;
  }
  sit::CommandLine command;
  if (sit::append_word(command, java.view()) && command.append(" -version")) {
    LogCmdOutput(command.c_str(), nullptr);
  }
}

}  // namespace

extern "C" {

void getJavaInfo(PHMVER* record) noexcept {
  if (record == nullptr) return;
  sit::CommandLine prefix;
  if (std::getenv("JREHOME") == nullptr && !source_java_env(sit::text_of(record->dir), prefix)) {
    return;
  }
  for (const JavaQuestion& question : kQuestions) {
    sit::log_computed(question.heading, record->version);
    if (sit::CommandLine command = prefix; command.append(question.command)) {
      LogCmdOutput(command.c_str(), nullptr);
    }
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
