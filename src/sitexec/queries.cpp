// Questions about installations.
#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "pelver/keys.h"
#include "session.h"
#include "sit/sitexec.h"
#include "sitexec/frame.h"

extern "C" {

char* GetPelVersList(unsigned int selector) noexcept {
  sit::ensure_session();
  sit::ensure_installations();
  sit::Path keys;
  for (const PHMVER* record = pphm; record != nullptr; record = record->next) {
    sit::Path key;
    if (IsCorrectProduct(record, static_cast<int>(selector)) == 0 ||
        !sit::version_key(*record, key) || keys.view().find(key.view()) != std::string_view::npos) {
      continue;
    }
    static_cast<void>(keys.append({keys.empty() ? "" : ",", key.view()}));
  }
  return sit::duplicate(keys.view()).release();
}

int FoundPelInst() noexcept {
  sit::ensure_session();
  return p_sitfunctbl->FindInstallation();
}

int FoundWebClient() noexcept {
  for (const PHMVER* record = pphm; record != nullptr; record = record->next) {
    if ((record->flags & PK_WEBCLIENT) != 0) return 1;
  }
  return 0;
}

}  // extern "C"
