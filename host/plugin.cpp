#include "plugin.h"

#include <dlfcn.h>

#include <array>
#include <utility>

#include "support/failure.h"

namespace host {

std::filesystem::path find_plugin() {
  const auto here = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  const std::array folders{here, here.parent_path() / "lib",
                           here.parent_path() / SIT_LIBRARY_DIRECTORY};
  for (const auto& folder : folders) {
    if (std::filesystem::exists(folder / SIT_LIBRARY_NAME)) return folder / SIT_LIBRARY_NAME;
  }
  throw Failure("cannot find " SIT_LIBRARY_NAME " beside " + here.string() +
                "/sit or in ../lib; use --plugin");
}

namespace {

std::string loader_message() {
  const char* message = ::dlerror();
  return message == nullptr ? "unknown error" : message;
}

}  // namespace

Plugin::Plugin(std::filesystem::path path, const std::vector<std::string>& names)
    : path_(std::move(path)), handle_(::dlopen(path_.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) throw Failure("cannot load the plug-in: " + loader_message());
  for (const std::string& name : names) static_cast<void>(address(name));
}

void* Plugin::address(const std::string& name) const {
  void* found = ::dlsym(handle_, name.c_str());
  if (found == nullptr) throw Failure(path_.string() + " is not this plug-in: it lacks " + name);
  return found;
}

}  // namespace host
