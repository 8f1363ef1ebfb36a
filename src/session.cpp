#include "session.h"

#include <pwd.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>

extern "C" {

constinit SitSession* pc = nullptr;
constinit std::int32_t IsInitiated = 0;
constinit std::int32_t IsVerbose = 0;
constinit std::int32_t nopel = 0;
constinit PlatformOps* p_sitfunctbl = nullptr;

const char* getusername() noexcept {
  const passwd* entry = ::getpwuid(::getuid());
  return entry == nullptr || entry->pw_name == nullptr ? "" : entry->pw_name;
}

int getHost(char* buffer) noexcept {
  constexpr std::size_t kBytes = 255;
  if (buffer == nullptr) return 1;
  buffer[0] = '\0';
  if (::gethostname(buffer, kBytes) != 0) {
    buffer[0] = '\0';
    return 1;
  }
  buffer[kBytes - 1] = '\0';
  return 0;
}

}  // extern "C"
