// The folder of a collection, held by descriptor: renaming it under the run leads nowhere.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <filesystem>
#include <string>

#include "support/descriptor.h"

namespace host {

// What the umask takes from all but the owner: reports hold secrets.
constexpr mode_t kOwnerOnlyMask = 0077;

class OutputFolder {
 public:
  // Makes a new folder of this name, or with a number behind it, that only its owner may look into.
  // Throws Failure where that cannot be done.
  OutputFolder(const std::filesystem::path& parent, const std::string& name);

  // One that is there already; nothing is made. Throws Failure where it cannot be opened.
  [[nodiscard]] static OutputFolder existing(const std::filesystem::path& path);

  [[nodiscard]] int descriptor() const { return folder_.get(); }

  // As it was made.
  [[nodiscard]] const std::string& name() const { return name_; }

  // Where it is by now.
  [[nodiscard]] std::filesystem::path path() const;

  // A path to it that holds while this process lives, if there is /proc to make one.
  [[nodiscard]] std::filesystem::path way() const;

  // Where it was made, for what goes beside it, and the path of that.
  [[nodiscard]] const Descriptor& place() const { return place_; }
  [[nodiscard]] std::filesystem::path beside(const std::string& name) const;

  // Makes the folders that lead to this file. False, with errno set, where that cannot be done.
  [[nodiscard]] bool make_way_to(const std::string& file) const;

  // A file that did not exist before. Not open, with errno set, where that cannot be done.
  [[nodiscard]] Descriptor create(const std::string& file) const;

  // A regular file in the folder, for reading.
  [[nodiscard]] Descriptor open(const std::string& file) const;

  // In bytes; 0 where there is no such file.
  [[nodiscard]] std::uint64_t size_of(const std::string& file) const;

  void remove(const std::string& file) const;

  // Gives whatever is in it a name that is safe to have, and its owner access to all folders.
  void tidy_names() const;

  // Nobody has removed it meanwhile.
  [[nodiscard]] bool is_there() const;

  // A folder for temporary files, by a path that holds wherever the output folder is moved to, for
  // as long as this process lives.
  [[nodiscard]] const std::string& temporary() const { return temporary_; }
  void remove_temporary() const;

  // With all that is in it.
  void remove_all() const;

 private:
  OutputFolder() = default;

  std::string name_;
  std::filesystem::path made_;  // for a machine without /proc
  Descriptor place_;
  Descriptor folder_;
  std::string temporary_;
};

}  // namespace host
