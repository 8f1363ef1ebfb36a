// Running one command line in a child shell.
#include "commfile.h"
#include "sit/codes.h"
#include "sit/situtil.h"
#include "situtil/child.h"
#include "situtil/start.h"

sit::Outcome sit::run(const Order& order) noexcept {
  const pid_t child = start(order);
  if (child >= 0) return {wait_for_child(child), true};
  LogMsg("Error forking %s, returned %d\n", order.command, child);
  return {SIT_FAILED, false};
}

extern "C" int execcmd(const char* command, const char* output) noexcept {
  if (command == nullptr || output == nullptr) return SIT_FAILED;
  return sit::run({.command = command, .output = output}).result;
}
