// The startup parameter files of brokers.
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "commfile.h"
#include "obvalid/obvalid.h"
#include "sit/situtil.h"

constinit char* plistpfname = nullptr;

namespace {

bool is_quote(char c) noexcept { return c == '\'' || c == '"'; }

// How long the value at the start of `text` is: it ends behind a quoted stretch, else before a
// space or the end of the line.
std::size_t value_length(std::string_view text) noexcept {
  if (text.starts_with('\n')) return 0;
  bool is_quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    LogMsgV("GetPFValue: character %c\n", c);
    if (is_quoted && is_quote(c)) return i + 1;
    if (c == '\n' || (c == ' ' && !is_quoted)) return i;
    is_quoted = is_quoted || is_quote(c);
  }
  return text.size();
}

std::string_view without_quotes(std::string_view value) noexcept {
  if (value.empty() || !is_quote(value.front())) return value;
  const std::size_t closing = value.rfind(value.front());
  return closing == 0 ? std::string_view{} : sit::head(sit::tail(value, 1), closing - 1);
}

void replace_list(sit::HeapText list) noexcept {
  std::free(std::exchange(plistpfname, list.release()));
}

// Whether the path stands in the list already, be it as a part of another one.
bool is_listed(const char* path) noexcept {
  return plistpfname != nullptr && std::strstr(plistpfname, path) != nullptr;
}

}  // namespace

void sit::forget_parameter_files() noexcept { replace_list(nullptr); }

void sit::log_parameter_files(const char* directory) noexcept {
  LogMsg("\n\n");
  LogTitle("PARAMETER FILES");
  LogParameterFile(directory, "startup.pf");
  const HeapText list{std::exchange(plistpfname, nullptr)};
  for (char* file = list.get(); file != nullptr;) {
    char* comma = std::strchr(file, ',');
    if (comma != nullptr) *comma++ = '\0';
    log_if_outside(file, directory);
    LogParameterFile(nullptr, file);
    file = comma;
  }
}

extern "C" {

char* GetPFValue(const char* line) noexcept {
  constexpr std::string_view kOption = "-pf";
  const std::string_view text = sit::text_of(line);
  const std::size_t option = text.find(kOption);
  if (option == std::string_view::npos) return nullptr;
  const std::string_view rest = sit::tail(text, option + kOption.size() + 1);
  LogMsgV("GetPFValue: reading line: %s\n", line);
  LogMsgV("GetPFValue: value is : %s\n", rest.data());
  LogMsgV("GetPFValue: before loop\n");
  const std::size_t length = value_length(rest);
  LogMsgV("GetPFValue: after loop string is %s\n", rest.data());
  sit::HeapText value = sit::duplicate(sit::head(rest, length));
  LogMsgV("GetPFValue: returning %s\n", value.get());
  return value.release();
}

void Add_pf_name(const char* directory, const char* value) noexcept {
  if (value == nullptr) return;
  LogMsgV("Add_pf_name: wrkdir %s pfile %s\n", directory == nullptr ? "<null>" : directory, value);
  const std::string_view file = without_quotes(value);
  const bool is_joined = !file.starts_with('/') && !sit::is_missing(directory);
  const sit::HeapText path =
      sit::concatenate({is_joined ? directory : std::string_view{}, is_joined ? "/" : "", file});
  if (path == nullptr) {
    replace_list(nullptr);
  } else if (!is_listed(path.get())) {
    const std::string_view list = sit::text_of(plistpfname);
    replace_list(sit::concatenate({list, list.empty() ? "" : ",", path.get()}));
  }
  LogMsgV("List of pf files: %s\n", plistpfname);
}

int LogParameterFile(const char* directory, const char* file) noexcept {
  const char* slash = sit::is_missing(directory) ? "" : "/";
  const sit::HeapText path = sit::concatenate({sit::text_of(directory), slash, sit::text_of(file)});
  const sit::RuleText stars = sit::rule('*', 68);
  LogMsg("\n%s\n", stars.c_str());
  LogMsg("* Parameter file: %s\n", file);
  LogMsg("%s\n", stars.c_str());
  if (const int error = ReadTextFile(path.get()); error != 0) {
    LogMsg("\nERROR: Could not read %s, errno = %d\n", path.get(), error);
  }
  return LogMsg("\n\n");
}

}  // extern "C"
