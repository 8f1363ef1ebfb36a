#include "sitexec/initiation.h"

#include <cstdlib>
#include <memory>

#include "commfile.h"
#include "commutils/views.h"
#include "pelver/pelver.h"
#include "sit/unixsit.h"

namespace sit::sitexec {
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
  read_host_name(session->hostName);
  if (!store(session->userName, user_name())) session->userName[0] = '\0';
  session->errorText = static_cast<char*>(std::calloc(kFirstErrorText, 1));
  if (session->errorText == nullptr) return {};
  p_sitfunctbl->WriteOSVersion(session->osVersion);
  return session;
}

// Bits of osFlags.
constexpr unsigned k95 = 1;
constexpr unsigned k98 = 2;
constexpr unsigned kMe = 4;
constexpr unsigned kNt = 8;
constexpr unsigned k2000 = 16;
constexpr unsigned kXp = 32;
constexpr unsigned kNet = 64;

void log_os_flags(unsigned flags) noexcept {
  log_verbose("IS NT %d 95 %d 98 %d ME %d 2000 %d XP %d NET %d\n", flags & kNt, flags & k95,
              flags & k98, flags & kMe, flags & k2000, flags & kXp, flags & kNet);
}

}  // namespace

void initiate() noexcept {
  p_sitfunctbl = &sitfunctbl;
  NewSession session = make_session();
  if (session == nullptr) return;
  pc = session.release();
  log_os_flags(pc->osFlags);
  IsInitiated = 1;
}

char* discover_installations() noexcept {
  ensure_session();
  char* messages = pelver::discover().release();
  if (pc != nullptr) pc->versionsText = messages;
  return messages;
}

const char* versions_text(HeapText& unowned) noexcept {
  if (pc != nullptr && pc->versionsText != nullptr) return pc->versionsText;
  unowned = pelver::discover();
  if (pc == nullptr) return unowned.get();
  return pc->versionsText = unowned.release();
}

void record_error(const char* text) noexcept {
  if (IsInitiated == 0 || pc == nullptr || text == nullptr) return;
  HeapText grown = concatenate({text_of(pc->errorText), text, "\n"});
  if (grown == nullptr) return;
  std::free(pc->errorText);
  pc->errorText = grown.release();
}

int take_errors(char* buffer) noexcept {
  char* const recorded = pc == nullptr ? nullptr : pc->errorText;
  const std::string_view text = text_of(recorded);
  if (buffer == nullptr || text_of(buffer).size() < text.size()) {
    return static_cast<int>(text.size());
  }
  put_text(buffer, text);
  if (recorded != nullptr) recorded[0] = '\0';
  return 0;
}

}  // namespace sit::sitexec
