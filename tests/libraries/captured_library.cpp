// A library whose entry points leave a file in the working directory.
#include <unistd.h>

#include <cstdio>

extern "C" {

__attribute__((visibility("default"))) void leave_a_file() {
  if (FILE* file = std::fopen("left", "w"); file != nullptr) std::fclose(file);
}

__attribute__((visibility("default"))) void leave_a_file_and_go() {
  leave_a_file();
  if (::chdir("/tmp") != 0) std::perror("chdir");
}

// What no library has is missed only when it is called.
void missing_everywhere();
__attribute__((visibility("default"))) void call_in_vain() { missing_everywhere(); }

}  // extern "C"
