#include "sit/pelsec.h"

#include "pelsec.h"

using sit::pelsec::StoreFormat;

extern "C" {

char szSSLCTemp[] = "%s x509 -text -in %s%c%s";

int LogSecurityInfoPre100B(PHMVER* record) noexcept {
  if (record != nullptr) sit::pelsec::write_stores(*record, StoreFormat::kBefore100B);
  return 0;
}

int LogSecurityInfo100B(PHMVER* record) noexcept {
  if (record != nullptr) sit::pelsec::write_stores(*record, StoreFormat::kFrom100B);
  return 0;
}

int getDirCertInfo(const char* tool, const char* store) noexcept {
  if (tool != nullptr && store != nullptr) sit::pelsec::list_certificates(tool, store);
  return 0;
}

}  // extern "C"
