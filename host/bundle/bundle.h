// Reading a finished collection, be it a folder or an archive.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace host {

class Bundle {
 public:
  // Throws Failure for what is there neither as folder nor as file.
  explicit Bundle(std::filesystem::path path);

  // Takes a part of a file; false when it wants no more.
  using Take = std::function<bool(std::string_view bytes)>;

  // Hands out a file, from its beginning on. Throws Failure when there is none of this name, or it
  // cannot be read to its end.
  void read(const std::string& file, const Take& take) const;

  // A whole file, which must not be a large one.
  [[nodiscard]] std::string text_of(const std::string& file) const;

 private:
  [[nodiscard]] bool read_from_folder(const std::string& file, const Take& take) const;
  [[nodiscard]] bool read_from_archive(const std::string& file, const Take& take) const;

  std::filesystem::path path_;
};

}  // namespace host
