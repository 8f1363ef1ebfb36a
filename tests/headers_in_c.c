/* The public headers as a C program sees them. */
#include "sit/sit.h"

struct field_order {
  char user[256], host[256], report[256];
  char *errors;
  char os[256];
  char *versions;
  unsigned flags;
};

/* A C host may call a slot with any arguments, and with none. */
int layouts_agree_in_c(const PlatformOps *table);
int layouts_agree_in_c(const PlatformOps *table) {
  return sizeof(SitSession) == sizeof(struct field_order) &&
         sizeof(PlatformOps) == 8 * sizeof(void *) &&
         table->PrepareConfigName("PELCFG", (PHMVER *)0) == 0 &&
         table->ListFurtherVersions((void *)0, 0) == 0 && table->ListFurtherEnvironment() == 0;
}
