#include "run/signal_watch.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "support/failure.h"
#include "support/text.h"

namespace host {
namespace {

bool is_ignored(int signal) {
  struct sigaction action {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

SignalWatch::SignalWatch() {
  ::signal(SIGCHLD, SIG_DFL);  // ignored, it would let no ended child be waited for
  sigset_t signals;
  ::sigemptyset(&signals);
  ::sigaddset(&signals, SIGCHLD);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    if (!is_ignored(signal)) ::sigaddset(&signals, signal);
  }
  ::sigprocmask(SIG_SETMASK, &signals, nullptr);
  signals_ = Descriptor(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
  if (!signals_.is_open()) throw Failure("no signals: " + error_text(errno));
}

std::optional<int> SignalWatch::take() const {
  std::optional<int> asked;
  signalfd_siginfo info{};
  while (::read(signals_.get(), &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
    if (info.ssi_signo != SIGCHLD) asked = static_cast<int>(info.ssi_signo);
  }
  return asked;
}

}  // namespace host
