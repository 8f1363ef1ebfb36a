#include "sit/commfile.h"

#include "commfile.h"
#include "commutils/heap_text.h"
#include "commutils/views.h"

using namespace sit;

extern "C" {

int LogOpen(const char* path, int mode) noexcept { return open_report(path, mode); }

int LogClose(int final) noexcept { return close_report(final); }

int LogMsg(const char* format, ...) noexcept {
  std::va_list arguments;
  va_start(arguments, format);
  const int result = log_formatted(format, arguments);
  va_end(arguments);
  return result;
}

int LogMsgV(const char* format, ...) noexcept {
  std::va_list arguments;
  va_start(arguments, format);
  const int result = log_verbose_formatted(format, arguments);
  va_end(arguments);
  return result;
}

int LogString(const char* text) noexcept { return log_text(text_of(text)); }

void LogTitle(const char* title) noexcept { log_title(text_of(title)); }

void Print_Header() noexcept { write_header(); }

int print_stat_line() noexcept { return log_rule(); }

int logtime(char* buffer) noexcept { return write_time(buffer); }

char* get_dir(const char* path) noexcept {
  return duplicate(directory_part(text_of(path))).release();
}

}  // extern "C"
