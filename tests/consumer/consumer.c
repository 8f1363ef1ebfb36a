#include <stdio.h>

#include "sit/sit.h"

int main(void) {
  char version[8];
  GetAPIVersion(version);
  return puts(version) < 0;
}
