#include "session.h"

#include <cstdint>

extern "C" {

constinit SitSession* pc = nullptr;
constinit std::int32_t IsInitiated = 0;
constinit std::int32_t IsVerbose = 0;
constinit std::int32_t nopel = 0;
constinit PlatformOps* p_sitfunctbl = nullptr;

const char* getusername() noexcept { return sit::user_name(); }

int getHost(char* buffer) noexcept {
  if (buffer == nullptr) return 1;
  return sit::read_host_name(buffer) ? 0 : 1;
}

}  // extern "C"
