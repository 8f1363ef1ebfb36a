#include "obvalid/parameter_files.h"

#include <cstring>

#include "commfile.h"
#include "commutils/text.h"
#include "commutils/views.h"
#include "obvalid/properties.h"
#include "situtil/capture.h"

namespace sit::obvalid {
namespace {

bool is_quote(char c) noexcept { return c == '\'' || c == '"'; }

// How long the value at the start of `text` is: it ends behind a quoted stretch, else before a
// space or the end of the line.
std::size_t value_length(std::string_view text) noexcept {
  if (text.starts_with('\n')) return 0;
  bool is_quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    log_verbose("GetPFValue: character %c\n", c);
    if (is_quoted && is_quote(c)) return i + 1;
    if (c == '\n' || (c == ' ' && !is_quoted)) return i;
    is_quoted = is_quoted || is_quote(c);
  }
  return text.size();
}

std::string_view without_quotes(std::string_view value) noexcept {
  if (value.empty() || !is_quote(value.front())) return value;
  const std::size_t closing = value.rfind(value.front());
  return closing == 0 ? std::string_view{} : head(tail(value, 1), closing - 1);
}

}  // namespace

void ParameterFiles::add(const char* directory, const char* value) noexcept {
  if (value == nullptr) return;
  log_verbose("Add_pf_name: wrkdir %s pfile %s\n", directory == nullptr ? "<null>" : directory,
              value);
  const std::string_view file = without_quotes(value);
  const bool is_joined = !file.starts_with('/') && !is_missing(directory);
  const HeapText path = concatenate({is_joined ? directory : "", is_joined ? "/" : "", file});
  const std::string_view list = text_of(list_.get());
  if (path == nullptr) {
    list_.reset();
  } else if (list_ == nullptr || !contains(list, path.get())) {
    list_ = concatenate({list, list.empty() ? "" : ",", path.get()});
  }
  log_verbose("List of pf files: %s\n", list_ == nullptr ? "" : list_.get());
}

void ParameterFiles::write_section(const char* directory) noexcept {
  log("\n\n");
  log_title("PARAMETER FILES");
  log_parameter_file(text_of(directory), "startup.pf");
  for (char* file = list_.get(); file != nullptr;) {
    char* comma = std::strchr(file, ',');
    if (comma != nullptr) *comma++ = '\0';
    log_if_outside(file, directory);
    log_parameter_file("", file);
    file = comma;
  }
  list_.reset();
}

HeapText parameter_file_in(const char* line) noexcept {
  constexpr std::string_view kOption = "-pf";
  const std::string_view text = text_of(line);
  const std::size_t option = text.find(kOption);
  if (option == std::string_view::npos) return nullptr;
  const std::string_view rest = tail(text, option + kOption.size() + 1);
  log_verbose("GetPFValue: reading line: %s\n", line);
  log_verbose("GetPFValue: value is : %s\n", rest.data());
  log_verbose("GetPFValue: before loop\n");
  const std::size_t length = value_length(rest);
  log_verbose("GetPFValue: after loop string is %s\n", rest.data());
  HeapText value = duplicate(head(rest, length));
  log_verbose("GetPFValue: returning %s\n", value.get());
  return value;
}

int log_parameter_file(std::string_view directory, const char* file) noexcept {
  const char* slash = directory.empty() ? "" : "/";
  const HeapText path = concatenate({directory, slash, text_of(file)});
  const RuleText stars = rule('*', 68);
  log("\n%s\n", stars.c_str());
  log("* Parameter file: %s\n", file);
  log("%s\n", stars.c_str());
  if (const int error = log_file(path.get()); error != 0) {
    log("\nERROR: Could not read %s, errno = %d\n", path.get(), error);
  }
  return log("\n\n");
}

}  // namespace sit::obvalid
