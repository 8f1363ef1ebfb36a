// Initiation and the small session calls.
#include <cstdlib>
#include <memory>

#include "commfile.h"
#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "session.h"
#include "sit/commutils.h"
#include "sit/pelver.h"
#include "sit/sitexec.h"
#include "sit/unixsit.h"
#include "sitexec/frame.h"

namespace {

constexpr std::size_t kFirstErrorText = 255;

struct FreeSession {
  void operator()(SitSession* session) const noexcept {
    std::free(session->errorText);
    std::free(session);
  }
};
using NewSession = std::unique_ptr<SitSession, FreeSession>;

NewSession make_session() noexcept {
  NewSession session{static_cast<SitSession*>(std::calloc(1, sizeof(SitSession)))};
  if (session == nullptr) return session;
  getHost(session->hostName);
  if (!sit::store(session->userName, getusername())) session->userName[0] = '\0';
  session->errorText = static_cast<char*>(std::calloc(kFirstErrorText, 1));
  if (session->errorText == nullptr) return {};
  p_sitfunctbl->WriteOSVersion(session->osVersion);
  return session;
}

void log_os_flags(unsigned flags) noexcept {
  LogMsgV("IS NT %d 95 %d 98 %d ME %d 2000 %d XP %d NET %d\n", flags & 8U, flags & 1U, flags & 2U,
          flags & 4U, flags & 16U, flags & 32U, flags & 64U);
}

}  // namespace

extern "C" {

int SIT_Initiate() noexcept {
  p_sitfunctbl = &sitfunctbl;
  NewSession session = make_session();
  if (session == nullptr) return 0;
  pc = session.release();
  log_os_flags(pc->osFlags);
  IsInitiated = 1;
  return 0;
}

void GetAPIVersion(char* buffer) noexcept {
  if (buffer != nullptr) stcopy(buffer, sit::kVersion);
}

void SetVerboseMode(int on) noexcept { IsVerbose = on; }

void SetPelloranIndependent(int on) noexcept { nopel = on; }

char* GetOSVersion(char* buffer) noexcept {
  sit::ensure_session();
  if (pc == nullptr || buffer == nullptr) return nullptr;
  stcopy(buffer, pc->osVersion);
  return buffer;
}

void PutRecentError(const char* text) noexcept {
  if (IsInitiated == 0 || pc == nullptr || text == nullptr) return;
  sit::HeapText grown = sit::concatenate({sit::text_of(pc->errorText), text, "\n"});
  if (grown == nullptr) return;
  std::free(pc->errorText);
  pc->errorText = grown.release();
}

int RetrieveErrors(char* buffer) noexcept {
  const char* recorded = pc == nullptr || pc->errorText == nullptr ? "" : pc->errorText;
  const int needed = stlen(recorded);
  if (buffer == nullptr || stlen(buffer) < needed) return needed;
  stcopy(buffer, recorded);
  if (needed > 0) pc->errorText[0] = '\0';
  return 0;
}

char* Initialize_pphm() noexcept {
  sit::ensure_session();
  char* messages = GetPhmVers();
  if (pc != nullptr) pc->versionsText = messages;
  return messages;
}

}  // extern "C"
