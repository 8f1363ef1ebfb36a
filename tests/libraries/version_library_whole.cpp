// A version library that answers every question.
#include <algorithm>
#include <cstring>

namespace {
short give(const char* text, char* buffer, int capacity) {
  if (capacity != 255) return 0;
  std::memcpy(buffer, text, std::min(std::strlen(text) + 1, std::size_t{255}));
  return 1;
}
}  // namespace

#define GETTER extern "C" __attribute__((visibility("default")))
GETTER short getVersion(char* buffer, int capacity) { return give("10.1B03", buffer, capacity); }
GETTER short getFullVersion(char* buffer, int capacity) {
  return give("10.1B0317 as of Mon Nov 16 20:15:44 2026", buffer, capacity);
}
GETTER short getMajorNumber() { return 10; }
GETTER short getMinorNumber() { return 1; }
GETTER short getBuildNumber() { return -3; }
GETTER short getServicePackNumber() { return 7; }
GETTER short getTemporaryFixNumber() { return 9; }
GETTER short getMaintenanceLevel(char* buffer, int capacity) { return give("B", buffer, capacity); }
