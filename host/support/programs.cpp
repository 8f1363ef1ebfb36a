#include "support/programs.h"

#include <unistd.h>

#include <cstdlib>
#include <sstream>

namespace host {

std::string whole_path() {
  const char* variable = std::getenv("PATH");
  return (variable == nullptr ? "" : std::string(variable) + ":") + std::string(kUsualPath);
}

bool is_here(std::string_view command) {
  const std::string program(command.substr(0, command.find(' ')));
  if (program.find('/') != std::string::npos) return ::access(program.c_str(), X_OK) == 0;
  if (program == "ulimit") return true;  // the shell's own
  std::istringstream path(whole_path());
  for (std::string folder; std::getline(path, folder, ':');) {
    if (::access(folder.append("/").append(program).c_str(), X_OK) == 0) return true;
  }
  return false;
}

}  // namespace host
