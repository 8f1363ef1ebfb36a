// A library of a product that falls sick, in the way that SICKNESS names, when it is asked for its
// version or called.
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#define EXPORT extern "C" __attribute__((visibility("default")))

namespace {

volatile bool is_sick = true;

int overflow() {
  volatile char frame[4096];
  frame[0] = 'x';
  return is_sick ? overflow() + frame[0] : 0;
}

}  // namespace

EXPORT void fall_sick() {
  const char* variable = std::getenv("SICKNESS");
  const std::string sickness = variable == nullptr ? "" : variable;
  std::fputs("the library's last words\n", stderr);
  if (sickness == "stray") {
    // Nothing of this is to be felt in the next row.
    static_cast<void>(::chdir("/"));
    ::umask(0);
    for (int signal = 1; signal < NSIG; ++signal) std::signal(signal, SIG_IGN);
  }
  if (sickness == "abort") std::abort();
  if (sickness == "exit") std::exit(3);
  if (sickness == "overflow") overflow();
  constexpr int kHostsOwn = 3;
  if (sickness == "close") ::closefrom(kHostsOwn);
  while (is_sick && (sickness == "hang" || sickness == "close")) {
  }
}

// With SICK_MARK, a file that counts the times, it falls sick the second time, in whatever process.
EXPORT short getVersion(char* buffer, int /*capacity*/) {
  const char* mark = std::getenv("SICK_MARK");
  FILE* times = mark == nullptr ? nullptr : std::fopen(mark, "a+");
  if (times != nullptr) std::fputc('x', times);
  const bool is_well = times != nullptr && std::ftell(times) != 2;
  if (times != nullptr) static_cast<void>(std::fclose(times));
  if (!is_well) fall_sick();
  std::memcpy(buffer, "10.1B03", sizeof "10.1B03");
  return 1;
}
