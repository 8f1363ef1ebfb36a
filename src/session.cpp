#include "session.h"

#include <pwd.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "commutils/heap_text.h"

extern "C" {

constinit SitSession* pc = nullptr;
constinit std::int32_t IsInitiated = 0;
constinit std::int32_t IsVerbose = 0;
constinit std::int32_t nopel = 0;
constinit PlatformOps* p_sitfunctbl = nullptr;

const char* getusername() noexcept {
  // The name service may bring the process down when memory runs out in it: go without a name
  // while there is none to spare.
  constexpr std::size_t kSpare = 65536;
  if (const sit::HeapText spare{static_cast<char*>(std::malloc(kSpare))}; spare == nullptr) {
    return "";
  }
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
