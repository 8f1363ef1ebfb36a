#include "sit/javaver.h"

#include "javaver.h"

extern "C" {

void getJavaInfo(PHMVER* record) noexcept {
  if (record != nullptr) sit::javaver::write_versions_for(*record);
}

void getJavaInfoSystem() noexcept { sit::javaver::write_versions_of_machine(); }

}  // extern "C"
