#include "bundle/bundle.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <utility>

#include "result/contents.h"
#include "support/failure.h"
#include "support/folder.h"
#include "support/text.h"

namespace host {
namespace {

// False where there is no such file.
bool read_file(const OutputFolder& folder, const std::string& file, const TakeBytes& take) {
  const Descriptor opened = folder.open(file);
  if (!opened.is_open()) return false;
  std::array<char, 65536> bytes;
  for (;;) {
    const ssize_t got = ::read(opened.get(), bytes.data(), bytes.size());
    if (got < 0) throw Failure(folder.path().string() + ": " + error_text(errno));
    if (got == 0 || !take({bytes.data(), static_cast<std::size_t>(got)})) return true;
  }
}

}  // namespace

Bundle::Bundle(std::filesystem::path path) : path_(std::move(path)) {
  if (!std::filesystem::exists(path_)) throw Failure(path_.string() + " is not there");
}

void Bundle::read(const std::string& file, const TakeBytes& take) const {
  bool is_found = false;
  if (std::filesystem::is_directory(path_)) {
    is_found = read_file(OutputFolder::existing(std::filesystem::absolute(path_)), file, take);
  } else {
    read_archive(
        path_,
        [&](const std::string& name) {
          is_found = name == file;
          return is_found ? take : TakeBytes();
        },
        [&is_found] { return is_found; });
  }
  if (!is_found) throw Failure(path_.string() + " is no collection: it has no " + file);
}

void Bundle::read_all(const TakeFile& take) const {
  if (!std::filesystem::is_directory(path_)) {
    read_archive(path_, take, [] { return false; });
    return;
  }
  const OutputFolder folder = OutputFolder::existing(std::filesystem::absolute(path_));
  for (const std::string& file : list(folder).files) {
    const TakeBytes take_bytes = take(file);
    if (take_bytes) static_cast<void>(read_file(folder, file, take_bytes));
  }
}

std::string Bundle::text_of(const std::string& file) const {
  constexpr std::size_t kMost = std::size_t{64} << 20U;
  std::string text;
  read(file, [&text](std::string_view bytes) {
    text += bytes;
    return text.size() < kMost;
  });
  return text;
}

}  // namespace host
