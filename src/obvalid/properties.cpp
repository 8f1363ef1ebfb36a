// What both validations do with their properties file.
#include <cerrno>
#include <cstdlib>
#include <string_view>

#include "commfile.h"
#include "obvalid/obvalid.h"
#include "pelver/keys.h"
#include "sit/situtil.h"
#include "situtil/copy.h"

namespace {

int copy_as(const char* path, const char* destination, std::string_view name) noexcept {
  sit::Path target;
  if (destination == nullptr) return EINVAL;
  if (!sit::compose(target, "The path", {destination, "/", name})) return ENAMETOOLONG;
  return sit::copy_end_of_file(path, target.c_str(), false, sit::Existing::kTruncate, path);
}

}  // namespace

sit::RuleText sit::rule(char character, std::size_t count) noexcept {
  RuleText text;
  for (std::size_t i = 0; i < count; ++i) static_cast<void>(text.append({&character, 1}));
  return text;
}

bool sit::is_directory(unsigned mode) noexcept {
  constexpr unsigned kDirectoryBit = 0x4000;
  return (mode & kDirectoryBit) != 0;
}

bool sit::is_file(const char* path, const char* what) noexcept {
  const unsigned mode = FileExists(path);
  if (mode == 0) {
    LogMsg("ERROR: Could not find %s: %s\n", what, path);
  } else if (is_directory(mode)) {
    LogMsg("ERROR: Could not  find the %s. %s is a directory!\n", what, path);
  } else {
    return true;
  }
  return false;
}

void sit::log_if_outside(const char* path, const char* directory) noexcept {
  if (path == nullptr || directory == nullptr) return;
  const HeapText file{::realpath(path, nullptr)};
  const HeapText home{::realpath(directory, nullptr)};
  if (file == nullptr) return;
  const std::string_view real = file.get();
  const std::string_view root = text_of(home.get());
  const bool is_inside = !root.empty() && real.starts_with(root) &&
                         (root.ends_with('/') || tail(real, root.size()).starts_with('/'));
  if (is_inside) return;
  const bool is_link = real != path;
  LogMsg("INFORMATION: %s lies outside %s%s%s.\n", path, directory, is_link ? ", at " : "",
         is_link ? file.get() : "");
}

int sit::copy_properties(const PHMVER& record, const char* path, const char* destination,
                         const char* announcement) noexcept {
  VersionedName name;
  int error = ENAMETOOLONG;
  if (name.append({base_name(path), "."}) && append_version(record.version, record.bitness, name)) {
    sit::log_computed(announcement, path, name.c_str());
    error = copy_as(path, destination, name.view());
  }
  if (error == 0) return SIT_OK;
  LogMsg("ERROR: Could not copy file, errno = %d\n\n", error);
  return SIT_COPY_FAILED;
}
