#include "commfile.h"

#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <utility>

#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "files.h"
#include "handles.h"
#include "session.h"
#include "signals.h"
#include "sit/commutils.h"

namespace {

// The open report; -1 while there is none. Every text goes straight into it, so nothing is ever
// waiting when a child is started or the process dies.
constinit int fp = -1;
constinit bool raises_signals = false;  // perhaps, when it is written to
constinit unsigned reports_opened = 0;

constexpr std::string_view kVerbose = "VERBOSE: ";
constexpr std::string_view kRule =
    "================================================================================";

std::string_view directory_part(std::string_view path) noexcept {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? std::string_view{} : sit::head(path, slash + 1);
}

void note_report_directory(const char* path) noexcept {
  if (pc == nullptr) return;
  if (const std::string_view directory = directory_part(path); !directory.empty()) {
    if (sit::store(pc->reportDir, directory)) return;
  } else if (::getcwd(pc->reportDir, sizeof pc->reportDir) != nullptr) {
    return;
  }
  stcopy(pc->reportDir, ".");
}

void take_as_report(sit::UniqueFd report) noexcept {
  raises_signals = sit::may_raise_signals(report.get());
  ++reports_opened;
  const sit::UniqueFd replaced{std::exchange(fp, report.release())};
}

// On success the report takes the place of the one open before.
int open_report(const char* path, sit::Existing existing) noexcept {
  sit::UniqueFd report = sit::open_for_writing(path, existing);
  if (!report.is_open()) return errno;
  take_as_report(std::move(report));
  return 0;
}

void begin_report() noexcept {
  Print_Header();
  LogMsgV("\n**Verbose Mode **\n");
}

int log_formatted(std::string_view prefix, const char* format, va_list arguments) noexcept {
  if (fp < 0) return 0;
  std::array<char, kVerbose.size() + SIT_MESSAGE_BYTES + 1> message;
  msgsub(sit::put(message.data(), prefix), format, arguments);
  // One verbose message follows another: one that is cut keeps the end of its line.
  const std::string_view text = message.data();
  const bool is_cut = text.size() == kVerbose.size() + SIT_MESSAGE_BYTES - 1;
  if (is_cut && sit::text_of(format).ends_with('\n') && !text.ends_with('\n')) {
    stcopy(message.data() + text.size(), "\n");
  }
  return LogString(message.data());
}

}  // namespace

int sit::log_bytes(std::string_view bytes) noexcept {
  if (fp < 0) return 0;
  const QuietWriting quiet{raises_signals};
  return write_all(fp, bytes) ? 0 : EOF;
}

void sit::log_once(unsigned& said_in, const char* text) noexcept {
  if (std::exchange(said_in, reports_opened) != reports_opened) LogString(text);
}

void sit::begin_report_in(UniqueFd file, const char* path) noexcept {
  take_as_report(std::move(file));
  begin_report();
  note_report_directory(path);
}

sit::TooLong::TooLong(std::string_view what, const Excerpt& text, std::size_t max_length) noexcept {
  constexpr std::size_t kSentence = 200;
  static_assert(kSentence + Excerpt::kMostWritten + sizeof "\n" <= sizeof message_);
  char* end = message_.data();
  end += std::snprintf(end, kSentence,
                       "ERROR: %.*s of %zu characters is longer than %zu and is not used: ",
                       static_cast<int>(what.size()), what.data(), text.length(), max_length);
  put(text.write(end), "\n");
}

extern "C" {

int LogOpen(const char* path, int mode) noexcept {
  if (path == nullptr) return SIT_NO_REPORT_PATH;
  if (std::strlen(path) >= SIT_PATH_BYTES) return SIT_PATH_TOO_LONG;
  bool is_new = true;
  int opened = SIT_BAD_OPEN_MODE;
  if ((mode & SIT_CREATE) != 0) {
    opened = open_report(path, sit::Existing::kTruncate);
  } else if ((mode & SIT_APPEND) != 0) {
    struct stat status {};
    is_new = ::stat(path, &status) != 0;
    opened = open_report(path, sit::Existing::kAppend);
  }
  if (opened != 0) return opened;
  if (is_new) begin_report();
  note_report_directory(path);
  return 0;
}

int LogClose(int final) noexcept {
  int result = 0;
  if (const sit::UniqueFd report{std::exchange(fp, -1)}; report.is_open()) {
    const char* end = final == SIT_FINAL ? "\n==End of Log==\n" : "\n";
    const sit::QuietWriting quiet{raises_signals};
    if (!sit::write_all(report.get(), end)) result = errno;
  }
  if (pc != nullptr) pc->reportDir[0] = '\0';
  return result;
}

int LogMsg(const char* format, ...) noexcept {
  std::va_list arguments;
  va_start(arguments, format);
  const int result = log_formatted("", format, arguments);
  va_end(arguments);
  return result;
}

int LogMsgV(const char* format, ...) noexcept {
  if (!sit::is_verbose()) return 0;
  std::va_list arguments;
  va_start(arguments, format);
  const int result = log_formatted(kVerbose, format, arguments);
  va_end(arguments);
  return result;
}

int LogString(const char* text) noexcept { return sit::log_bytes(sit::text_of(text)); }

void LogTitle(const char* title) noexcept {
  const std::string_view text = sit::text_of(title);
  sit::log_bytes(text);
  sit::log_bytes("\n");
  for (std::size_t shown = 0; shown < text.size(); shown += kRule.size()) {
    sit::log_bytes(sit::head(kRule, text.size() - shown));
  }
  sit::log_bytes("\n\n");
}

void Print_Header() noexcept {
  std::array<char, SIT_PATH_BYTES> own_host{};
  const char* user = pc != nullptr ? pc->userName : getusername();
  const char* host = pc != nullptr ? pc->hostName : own_host.data();
  const bool host_known = pc != nullptr ? pc->hostName[0] != '\0' : getHost(own_host.data()) == 0;
  std::array<char, 100> time{};
  logtime(time.data());

  LogMsg("     P E L L O R A N     P E L I N V E N T O R Y     T O O L\n\n");
  LogMsg("Version             : %s\n", sit::kVersion);
  LogMsg("User Name           : %s\n", *user != '\0' ? user : "(blank)");
  if (host_known) {
    LogMsg("Machine Name        : %s\n", *host != '\0' ? host : "(blank)");
  } else {
    LogMsg("** ERROR: Can't get machine name\n");
  }
  LogMsg("Date and Time       : %s\n", time.data());
  print_stat_line();
}

int print_stat_line() noexcept { return LogMsg("%s\n\n", kRule.data()); }

int logtime(char* buffer) noexcept {
  if (buffer == nullptr) return 0;
  buffer[0] = '\0';
  timeval now{};
  tm local{};
  ::gettimeofday(&now, nullptr);
  if (::localtime_r(&now.tv_sec, &local) == nullptr) return 0;
  if (::asctime_r(&local, buffer) == nullptr) buffer[0] = '\0';
  return stlen(buffer);
}

char* get_dir(const char* path) noexcept {
  return sit::duplicate(directory_part(sit::text_of(path))).release();
}

}  // extern "C"
