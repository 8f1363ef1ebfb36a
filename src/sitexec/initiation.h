// Initiation and the small session calls.
#pragma once

#include "commutils/heap_text.h"
#include "pelver/installations.h"
#include "session.h"

namespace sit::sitexec {

// As SIT_Initiate.
void initiate() noexcept;

// As Initialize_pphm.
char* discover_installations() noexcept;

inline void ensure_session() noexcept {
  if (IsInitiated == 0) initiate();
}
inline void ensure_installations() noexcept {
  if (pelver::installations().empty()) discover_installations();
}

// The messages of the last discovery; of one made now when there was none. Null when memory runs
// out.
[[nodiscard]] const char* versions_text(HeapText& unowned) noexcept;

// As PutRecentError and RetrieveErrors.
void record_error(const char* text) noexcept;
[[nodiscard]] int take_errors(char* buffer) noexcept;

}  // namespace sit::sitexec
