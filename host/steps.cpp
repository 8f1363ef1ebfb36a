#include "steps.h"

#include "sit/codes.h"
#include "sit/sitexec.h"

namespace host {

std::vector<Step> collection_steps() {
  return {
      {"GetVersInfo", "versions.txt",
       [](const Plugin& plugin, const char* path) {
         return plugin.function<decltype(::GetVersInfo)>("GetVersInfo")(path, SIT_CREATE, SIT_FINAL,
                                                                        1);
       }},
      {"GetSysInfo", "system.txt",
       [](const Plugin& plugin, const char* path) {
         return plugin.function<decltype(::GetSysInfo)>("GetSysInfo")(path, 0, SIT_CREATE,
                                                                      SIT_FINAL);
       }},
      {"GetEnvironInfo", "environment.txt",
       [](const Plugin& plugin, const char* path) {
         return plugin.function<decltype(::GetEnvironInfo)>("GetEnvironInfo")(path, SIT_CREATE,
                                                                              SIT_FINAL);
       }},
  };
}

}  // namespace host
