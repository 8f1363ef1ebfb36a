// A version library of an early release: a version, nothing else.
#include <cstring>

extern "C" __attribute__((visibility("default"))) short getVersion(char* buffer, int /*capacity*/) {
  std::memcpy(buffer, "9.1D09", sizeof "9.1D09");
  return 1;
}
