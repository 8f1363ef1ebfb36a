// Reading a finished collection, be it a folder or an archive.
#pragma once

#include <filesystem>
#include <string>

#include "bundle/entries.h"

namespace host {

class Bundle {
 public:
  // Throws Failure for what is there neither as folder nor as file.
  explicit Bundle(std::filesystem::path path);

  // Hands out a file, from its beginning on. Throws Failure when there is none of this name, or it
  // cannot be read to its end.
  void read(const std::string& file, const TakeBytes& take) const;

  // Hands out all files, whatever their order.
  void read_all(const TakeFile& take) const;

  // A whole file, which must not be a large one.
  [[nodiscard]] std::string text_of(const std::string& file) const;

  [[nodiscard]] const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

}  // namespace host
