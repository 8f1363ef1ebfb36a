// A host program whose own names are the plug-in's too. Usage: clashing_host PLUGIN REPORT FLAG
#include <dlfcn.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "sit/sitexec.h"

namespace {
int own_calls = 0;
}

extern "C" {
int pc = 11;
int pphm = 12;
int logs = 13;
int IsInitiated = 1;
const char* MACHLST[] = {"echo the list of the host", nullptr};
void reverse(char* /*text*/) { ++own_calls; }
int execcmd(const char* /*command*/, const char* /*output*/) { return ++own_calls; }
int LogMsg(const char* /*format*/, ...) { return ++own_calls; }
int SIT_Initiate() noexcept { return ++own_calls; }
}

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  const int scope = std::strcmp(argv[3], "global") == 0 ? RTLD_GLOBAL : RTLD_LOCAL;
  void* plugin = ::dlopen(argv[1], RTLD_NOW | scope);
  if (plugin == nullptr) {
    std::fprintf(stderr, "%s\n", ::dlerror());
    return 1;
  }
  const auto get_sys_info = reinterpret_cast<decltype(&GetSysInfo)>(::dlsym(plugin, "GetSysInfo"));
  const auto intoal = reinterpret_cast<int (*)(int, char*)>(::dlsym(plugin, "intoal"));
  char digits[12];
  const bool works = get_sys_info(argv[2], 0, 64, 1) == 0 && intoal(-42, digits) == 3 &&
                     std::strcmp(digits, "-42") == 0;
  const bool host_untouched =
      own_calls == 0 && pc == 11 && pphm == 12 && logs == 13 && IsInitiated == 1;
  const bool unloads =
      ::dlclose(plugin) == 0 && ::dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) == nullptr;
  std::printf("works %d, host untouched %d, unloads %d\n", works, host_untouched, unloads);
  return works && host_untouched && unloads ? 0 : 1;
}
