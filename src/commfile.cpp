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
#include "sit/commutils.h"

namespace {

// The open report. Every write is flushed, so nothing of it is ever waiting in the stream when a
// child is forked or the process dies.
constinit FILE* fp = nullptr;

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

// On success the report takes the place of the one open before.
int open_report(const char* path, sit::Existing existing) noexcept {
  sit::UniqueFile report = sit::open_for_writing(path, existing);
  if (report == nullptr) return errno;
  const sit::UniqueFile replaced{std::exchange(fp, report.release())};
  return 0;
}

void begin_report() noexcept {
  Print_Header();
  LogMsgV("\n**Verbose Mode **\n");
}

int log_formatted(const char* prefix, const char* format, va_list arguments) noexcept {
  if (fp == nullptr) return 0;
  std::array<char, SIT_MESSAGE_BYTES> message{};
  msgsub(message.data(), format, arguments);
  std::fputs(prefix, fp);
  return LogString(message.data());
}

}  // namespace

int sit::log_bytes(std::string_view bytes) noexcept {
  if (fp == nullptr) return 0;
  const bool is_whole = std::fwrite(bytes.data(), 1, bytes.size(), fp) == bytes.size();
  return std::fflush(fp) == 0 && is_whole ? 0 : EOF;
}

sit::TooLong::TooLong(std::string_view what, std::initializer_list<std::string_view> pieces,
                      std::size_t max_length) noexcept {
  // The beginning is enough to recognise the text by.
  constexpr std::size_t kShown = 200;
  std::size_t length = 0;
  for (const std::string_view piece : pieces) length += piece.size();
  char* end = message_.data();
  end += std::snprintf(end, message_.size() - kShown - 8,
                       "ERROR: %.*s of %zu characters is longer than %zu and is not used: ",
                       static_cast<int>(what.size()), what.data(), length, max_length);
  std::size_t room = kShown;
  for (const std::string_view piece : pieces) {
    const std::string_view shown = head(piece, room);
    end = put(end, shown);
    room -= shown.size();
  }
  put(end, length > kShown ? "...\n" : "\n");
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
  if (const sit::UniqueFile report{std::exchange(fp, nullptr)}; report != nullptr) {
    std::clearerr(report.get());
    std::fputs(final == SIT_FINAL ? "\n==End of Log==\n" : "\n", report.get());
    if (std::fflush(report.get()) != 0) result = errno;
    if (std::ferror(report.get()) != 0) result = errno;
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
  const int result = log_formatted("VERBOSE: ", format, arguments);
  va_end(arguments);
  return result;
}

int LogString(const char* text) noexcept { return sit::log_bytes(sit::text_of(text)); }

void LogTitle(const char* title) noexcept {
  if (fp == nullptr) return;
  const std::string_view text = sit::text_of(title);
  std::fwrite(text.data(), 1, text.size(), fp);
  std::fputc('\n', fp);
  for (std::size_t i = 0; i < text.size(); ++i) std::fputc('=', fp);
  std::fputs("\n\n", fp);
  std::fflush(fp);
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

int print_stat_line() noexcept {
  std::array<char, 81> line{};
  line.fill('=');
  line.back() = '\0';
  return LogMsg("%s\n\n", line.data());
}

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
