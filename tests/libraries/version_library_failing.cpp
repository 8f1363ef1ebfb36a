// A version library whose getters fill their buffers to the brim and report failure.
#include <cstring>

#define GETTER extern "C" __attribute__((visibility("default")))
GETTER short getVersion(char* buffer, int capacity) {
  std::memset(buffer, 'x', static_cast<std::size_t>(capacity));
  return 0;
}
GETTER short getMaintenanceLevel(char* buffer, int capacity) {
  return getVersion(buffer, capacity);
}
