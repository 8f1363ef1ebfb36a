#include "commfile.h"

#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <utility>

#include "commutils/message.h"
#include "commutils/views.h"
#include "files.h"
#include "session.h"
#include "signals.h"

namespace sit {
namespace {

// The open report; -1 while there is none. Every text goes straight into it, so nothing is ever
// waiting when a child is started or the process dies.
constinit int report_fd = -1;
constinit bool raises_signals = false;  // perhaps, when it is written to
constinit unsigned reports_opened = 0;

constexpr std::string_view kVerbose = "VERBOSE: ";
constexpr std::string_view kRule =
    "================================================================================";

void note_report_directory(const char* path) noexcept {
  if (pc == nullptr) return;
  if (const std::string_view directory = directory_part(path); !directory.empty()) {
    if (store(pc->reportDir, directory)) return;
  } else if (::getcwd(pc->reportDir, sizeof pc->reportDir) != nullptr) {
    return;
  }
  put_text(pc->reportDir, ".");
}

// The report takes the place of the one open before.
void take_as_report(UniqueFd report) noexcept {
  raises_signals = may_raise_signals(report.get());
  ++reports_opened;
  const UniqueFd replaced{std::exchange(report_fd, report.release())};
}

int open_as_report(const char* path, Existing existing) noexcept {
  UniqueFd report = open_for_writing(path, existing);
  if (!report.is_open()) return errno;
  take_as_report(std::move(report));
  return SIT_OK;
}

void begin_report() noexcept {
  write_header();
  log_verbose("\n**Verbose Mode **\n");
}

int log_prefixed(std::string_view prefix, const char* format, std::va_list arguments) noexcept {
  if (report_fd < 0) return 0;
  std::array<char, kVerbose.size() + SIT_MESSAGE_BYTES + 1> message;
  format_message(put(message.data(), prefix), format, arguments);
  // One verbose message follows another: one that is cut keeps the end of its line.
  const std::string_view text = message.data();
  const bool is_cut = text.size() == kVerbose.size() + SIT_MESSAGE_BYTES - 1;
  if (is_cut && text_of(format).ends_with('\n') && !text.ends_with('\n')) {
    put_text(message.data() + text.size(), "\n");
  }
  return log_text(message.data());
}

}  // namespace

int open_report(const char* path, int mode) noexcept {
  if (path == nullptr) return SIT_NO_REPORT_PATH;
  if (std::strlen(path) >= SIT_PATH_BYTES) return SIT_PATH_TOO_LONG;
  bool is_new = true;
  int opened = SIT_BAD_OPEN_MODE;
  if ((mode & SIT_CREATE) != 0) {
    opened = open_as_report(path, Existing::kTruncate);
  } else if ((mode & SIT_APPEND) != 0) {
    struct stat status {};
    is_new = ::stat(path, &status) != 0;
    opened = open_as_report(path, Existing::kAppend);
  }
  if (opened != SIT_OK) return opened;
  if (is_new) begin_report();
  note_report_directory(path);
  return SIT_OK;
}

int close_report(int final) noexcept {
  int result = 0;
  if (const UniqueFd report{std::exchange(report_fd, -1)}; report.is_open()) {
    const char* end = final == SIT_FINAL ? "\n==End of Log==\n" : "\n";
    const QuietWriting quiet{raises_signals};
    if (!write_all(report.get(), end)) result = errno;
  }
  if (pc != nullptr) pc->reportDir[0] = '\0';
  return result;
}

void begin_report_in(UniqueFd file, const char* path) noexcept {
  take_as_report(std::move(file));
  begin_report();
  note_report_directory(path);
}

void write_header() noexcept {
  std::array<char, SIT_PATH_BYTES> own_host{};
  const char* user = pc != nullptr ? pc->userName : user_name();
  const char* host = pc != nullptr ? pc->hostName : own_host.data();
  const bool host_known = pc != nullptr ? pc->hostName[0] != '\0' : read_host_name(own_host.data());
  std::array<char, 100> time{};
  write_time(time.data());

  log("     P E L L O R A N     P E L I N V E N T O R Y     T O O L\n\n");
  log("Version             : %s\n", kVersion);
  log("User Name           : %s\n", *user != '\0' ? user : "(blank)");
  if (host_known) {
    log("Machine Name        : %s\n", *host != '\0' ? host : "(blank)");
  } else {
    log("** ERROR: Can't get machine name\n");
  }
  log("Date and Time       : %s\n", time.data());
  log_rule();
}

int log_text(std::string_view bytes) noexcept {
  if (report_fd < 0) return 0;
  const QuietWriting quiet{raises_signals};
  return write_all(report_fd, bytes) ? 0 : EOF;
}

int log(const char* format, ...) noexcept {
  std::va_list arguments;
  va_start(arguments, format);
  const int result = log_formatted(format, arguments);
  va_end(arguments);
  return result;
}

int log_verbose(const char* format, ...) noexcept {
  std::va_list arguments;
  va_start(arguments, format);
  const int result = log_verbose_formatted(format, arguments);
  va_end(arguments);
  return result;
}

int log_formatted(const char* format, std::va_list arguments) noexcept {
  return log_prefixed("", format, arguments);
}

int log_verbose_formatted(const char* format, std::va_list arguments) noexcept {
  return is_verbose() ? log_prefixed(kVerbose, format, arguments) : 0;
}

int log_pieces(std::initializer_list<std::string_view> pieces) noexcept {
  int result = 0;
  for (const std::string_view piece : pieces) {
    if (log_text(piece) != 0) result = EOF;
  }
  return result;
}

void log_once(unsigned& said_in, std::string_view text) noexcept {
  if (std::exchange(said_in, reports_opened) != reports_opened) log_text(text);
}

void log_title(std::string_view title) noexcept {
  log_pieces({title, "\n"});
  for (std::size_t shown = 0; shown < title.size(); shown += kRule.size()) {
    log_text(head(kRule, title.size() - shown));
  }
  log_text("\n\n");
}

int log_rule() noexcept { return log_pieces({kRule, "\n\n"}); }

int write_time(char* buffer) noexcept {
  if (buffer == nullptr) return 0;
  buffer[0] = '\0';
  timeval now{};
  tm local{};
  ::gettimeofday(&now, nullptr);
  if (::localtime_r(&now.tv_sec, &local) == nullptr) return 0;
  if (::asctime_r(&local, buffer) == nullptr) buffer[0] = '\0';
  return static_cast<int>(std::strlen(buffer));
}

std::string_view directory_part(std::string_view path) noexcept {
  return head(path, path.rfind('/') + 1);
}

TooLong::TooLong(std::string_view what, const Excerpt& text, std::size_t max_length) noexcept {
  constexpr std::size_t kSentence = 200;
  static_assert(kSentence + Excerpt::kMostWritten + sizeof "\n" <= sizeof message_);
  char* end = message_.data();
  end += std::snprintf(end, kSentence,
                       "ERROR: %.*s of %zu characters is longer than %zu and is not used: ",
                       static_cast<int>(what.size()), what.data(), text.length(), max_length);
  end = text.write(end);
  if (end[-1] != '\n') put(end, "\n");
}

}  // namespace sit
