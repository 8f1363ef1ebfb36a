// The plug-in, reached through the dynamic loader alone.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace host {

// The plug-in beside this program or in ../lib. Throws Failure when there is none.
[[nodiscard]] std::filesystem::path find_plugin();

class Plugin {
 public:
  // Throws Failure when it cannot be loaded or lacks one of the `names`.
  Plugin(std::filesystem::path path, const std::vector<std::string>& names);

  template <typename Signature>
  [[nodiscard]] Signature* function(const std::string& name) const {
    return reinterpret_cast<Signature*>(address(name));
  }
  template <typename Type>
  [[nodiscard]] Type& variable(const std::string& name) const {
    return *static_cast<Type*>(address(name));
  }

 private:
  [[nodiscard]] void* address(const std::string& name) const;

  std::filesystem::path path_;
  // Never unloaded: the plug-in keeps its session until the process ends.
  void* handle_;
};

}  // namespace host
