#include "support/printing.h"

#include <unistd.h>

#include <cstdlib>

namespace host {

Printing::Printing() : is_terminal_(::isatty(STDOUT_FILENO) == 1) {
  const char* pager = std::getenv("PAGER");
  if (is_terminal_) pipe_ = ::popen(pager == nullptr || *pager == '\0' ? "less" : pager, "we");
}

Printing::~Printing() {
  if (pipe_ != nullptr) ::pclose(pipe_);
}

bool Printing::print(const std::string& text) {
  FILE* const out = pipe_ == nullptr ? stdout : pipe_;
  // Nothing found on a machine may steer a terminal.
  std::string shown = text;
  for (char& c : shown) {
    const bool is_control = static_cast<unsigned char>(c) < ' ' && c != '\n' && c != '\t';
    if (is_terminal_ && is_control) c = '?';
  }
  return std::fwrite(shown.data(), 1, shown.size(), out) == shown.size() &&
         (pipe_ != nullptr || std::fflush(out) == 0);
}

}  // namespace host
