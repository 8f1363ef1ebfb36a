#include "work/answers.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <nlohmann/json.hpp>
#include <string_view>

namespace host {

void Answers::send(char kind, std::string text) const {
  std::replace(text.begin(), text.end(), '\n', ' ');
  const std::string line = std::string{kind, ' '} + text + "\n";
  // No handler may put a line of its own into this one.
  sigset_t children;
  sigset_t before;
  ::sigemptyset(&children);
  ::sigaddset(&children, SIGCHLD);
  ::sigprocmask(SIG_BLOCK, &children, &before);
  std::string_view rest = line;
  while (!rest.empty()) {
    const ssize_t sent = ::write(pipe_, rest.data(), rest.size());
    if (sent < 0 && errno != EINTR) break;
    if (sent > 0) rest.remove_prefix(static_cast<std::size_t>(sent));
  }
  ::sigprocmask(SIG_SETMASK, &before, nullptr);
}

void Answers::send(char kind, const nlohmann::json& json) const {
  send(kind, json.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
}

}  // namespace host
