// A library whose entry point leaves a file in the working directory.
#include <cstdio>

extern "C" __attribute__((visibility("default"))) void leave_a_file() {
  if (FILE* file = std::fopen("left", "w"); file != nullptr) std::fclose(file);
}
