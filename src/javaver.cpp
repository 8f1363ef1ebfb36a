// The Java runtimes: their own version output is the finding.
#include "sit/javaver.h"

#include <cstdlib>
#include <string_view>

#include "commfile.h"
#include "commutils/bounded_text.h"
#include "commutils/views.h"
#include "sit/situtil.h"
#include "situtil/path.h"

namespace {

constexpr std::size_t kPrefixBytes = 512;
constexpr std::size_t kCommandBytes = 1021;
using Prefix = sit::BoundedText<kPrefixBytes>;
using Command = sit::BoundedText<kCommandBytes>;

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
bool source_java_env(std::string_view directory, Prefix& prefix) noexcept {
  Prefix script;
  if (!script.append({directory, "/bin/java_env"})) {
    LogString(sit::TooLong{"The path of java_env in", directory, Prefix::kMaxLength}.c_str());
    return false;
  }
  if (FileExists(script.c_str()) == 0) {
    LogMsg("%s does not exist, cannot determine Java versions for $PHM\n", script.c_str());
    return false;
  }
  if (!prefix.append({"PHM=", directory, ";export PHM; . ", script.view(), ";"})) {
    LogString(sit::TooLong{"The command that sources java_env in", directory, Prefix::kMaxLength}
                  .c_str());
    return false;
  }
  return true;
}

}  // namespace

extern "C" {

void getJavaInfo(PHMVER* record) noexcept {
  if (record == nullptr) return;
  Prefix prefix;
  if (std::getenv("JREHOME") == nullptr && !source_java_env(sit::text_of(record->dir), prefix)) {
    return;
  }
  for (const JavaQuestion& question : kQuestions) {
    LogMsg(question.heading, record->version);
    if (Command command; command.append({prefix.view(), question.command})) {
      LogCmdOutput(command.c_str(), nullptr);
    }
    LogMsg("\n");
  }
}

void getJavaInfoSystem() noexcept {
  if (const char* home = std::getenv("JAVA_HOME"); home != nullptr) {
    LogMsg("JAVA_HOME indicates Java is installed in %s\n", home);
    sit::Path java;
    Command command;
    if (!sit::join_path(java, {home, "bin/java"}) || !command.append({java.view(), " -version"})) {
      LogString(sit::TooLong{"The path of Java in", home, sit::Path::kMaxLength}.c_str());
    } else if (FileExists(java.c_str()) != 0) {
      LogCmdOutput(command.c_str(), nullptr);
    } else {
      LogMsg("Java executable %s does not exist\n", java.c_str());
    }
  } else {
    LogMsg("JAVA_HOME not found.\nAttempting java -version...\n");
    LogCmdOutput("java -version", nullptr);
  }
  LogMsg("\n");
}

}  // extern "C"
