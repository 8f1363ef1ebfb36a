#include "javaver.h"

#include <cstdlib>
#include <string_view>

#include "commfile.h"
#include "commutils/bounded_text.h"
#include "commutils/views.h"
#include "file_status.h"
#include "situtil/capture.h"
#include "situtil/command.h"
#include "situtil/path.h"

namespace sit::javaver {
namespace {

constexpr std::size_t kPrefixLength = 511;
constexpr std::size_t kCommandLength = 1020;
using Script = BoundedText<kPrefixLength + 1>;

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
  if (!compose_path(script, {directory, "/bin/java_env"})) return false;
  if (exists(script.c_str())) return true;
  log("%s does not exist, cannot determine Java versions for $PHM\n", script.c_str());
  return false;
}

// What the shell must do first to know the installation's Java; nothing without a script.
Command prefix(std::string_view directory, const Script& script, std::size_t max_length) noexcept {
  Command command{max_length};
  if (script.empty()) return command;
  command.raw("PHM=").word(directory).raw(";export PHM; . ").word(script.view()).raw(";");
  return command;
}

void log_version_in(std::string_view home) noexcept {
  Path java;
  if (!compose_path(java, {home, "/bin/java"})) return;
  if (!exists(java.c_str())) {
    log("Java executable %s does not exist\n", java.c_str());
    return;
  }
  Command command;
  command.word(java.view()).raw(" -version").run();
}

}  // namespace

void write_versions_for(const PHMVER& record) noexcept {
  const std::string_view directory = text_of(record.dir);
  Script script;
  if (std::getenv("JREHOME") == nullptr &&
      (!find_java_env(directory, script) || !prefix(directory, script, kPrefixLength).fits())) {
    return;
  }
  for (const JavaQuestion& question : kQuestions) {
    log_computed(question.heading, record.version);
    prefix(directory, script, kCommandLength).raw(question.command).run();
    log("\n");
  }
}

void write_versions_of_machine() noexcept {
  if (const char* home = std::getenv("JAVA_HOME"); home != nullptr) {
    log("JAVA_HOME indicates Java is installed in %s\n", home);
    log_version_in(home);
  } else {
    log("JAVA_HOME not found.\nAttempting java -version...\n");
    log_output_of("java -version");
  }
  log("\n");
}

}  // namespace sit::javaver
