#include "obvalid/properties.h"

#include <cerrno>
#include <cstdlib>

#include "commfile.h"
#include "file_status.h"
#include "pelver/keys.h"
#include "sit/codes.h"
#include "situtil/copy.h"
#include "situtil/path.h"

namespace sit::obvalid {
namespace {

int copy_as(const char* path, const char* destination, std::string_view name) noexcept {
  Path target;
  if (destination == nullptr) return EINVAL;
  if (!compose_path(target, {destination, "/", name})) return ENAMETOOLONG;
  return copy_end_of_file({.source = path, .destination = target.c_str(), .tells = true});
}

}  // namespace

bool is_file(const char* path, const char* what) noexcept {
  const unsigned mode = file_mode(path);
  if (mode == 0) {
    log("ERROR: Could not find %s: %s\n", what, path);
  } else if (is_directory(mode)) {
    log("ERROR: Could not  find the %s. %s is a directory!\n", what, path);
  } else {
    return true;
  }
  return false;
}

void log_if_outside(const char* path, const char* directory) noexcept {
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
  log("INFORMATION: %s lies outside %s%s%s.\n", path, directory, is_link ? ", at " : "",
      is_link ? file.get() : "");
}

int copy_properties(const PHMVER& record, const char* path, const char* destination,
                    const char* announcement) noexcept {
  pelver::VersionedName name;
  int error = ENAMETOOLONG;
  if (name.append({base_name(path), "."}) &&
      pelver::append_version(record.version, record.bitness, name)) {
    log_computed(announcement, path, name.c_str());
    error = copy_as(path, destination, name.view());
  }
  if (error == 0) return SIT_OK;
  log("ERROR: Could not copy file, errno = %d\n\n", error);
  return SIT_COPY_FAILED;
}

}  // namespace sit::obvalid
