/* Runs GetSysInfo and prints the peak memory of this process in KiB.
 * Usage: bench_host PLUGIN REPORT */
#include <dlfcn.h>
#include <stdio.h>
#include <string.h>

#include "sit/sitexec.h"

int main(int argc, char **argv) {
  int (*get_sys_info)(const char *, int16_t, int, int);
  char line[256];
  void *plugin;
  FILE *status;
  if (argc != 3) return 2;
  plugin = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (plugin == NULL) return 1;
  *(void **)&get_sys_info = dlsym(plugin, "GetSysInfo");
  if (get_sys_info == NULL || get_sys_info(argv[2], 0, 64, 1) != 0) return 1;
  status = fopen("/proc/self/status", "r");
  while (status != NULL && fgets(line, sizeof line, status) != NULL) {
    if (strncmp(line, "VmHWM:", 6) == 0) fputs(line + 6, stdout);
  }
  return 0;
}
