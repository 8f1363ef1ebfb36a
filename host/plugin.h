// The plug-in, reached through the dynamic loader alone.
#pragma once

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace host {

// Something that the user must be told in one line.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Plugin {
 public:
  // Loads the plug-in at `path`, or the one beside this program or in ../lib. Throws Failure when
  // it cannot be loaded or lacks one of the `names`.
  Plugin(const std::optional<std::filesystem::path>& path, const std::vector<std::string>& names);

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
