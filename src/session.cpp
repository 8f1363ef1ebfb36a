#include "session.h"

#include <pwd.h>
#include <unistd.h>

namespace sit {

const char* user_name() noexcept {
  const passwd* entry = ::getpwuid(::getuid());
  return entry == nullptr || entry->pw_name == nullptr ? "" : entry->pw_name;
}

bool read_host_name(char* buffer) noexcept {
  buffer[0] = '\0';
  const bool is_known = ::gethostname(buffer, kHostNameBytes) == 0;
  buffer[is_known ? kHostNameBytes - 1 : 0] = '\0';
  return is_known;
}

}  // namespace sit
