#include "bundle/bundle.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <utility>

#include "bundle/stream.h"
#include "support/folder.h"

namespace host {
namespace {

constexpr std::size_t kBlock = 65536;

// Whether the entry is this file, which stands below the collection's folder.
bool is_file(archive_entry* entry, const std::string& file) {
  const char* name = ::archive_entry_pathname(entry);
  const std::string_view path = name == nullptr ? "" : name;
  const std::size_t slash = path.find('/');
  return slash != std::string_view::npos && path.substr(slash + 1) == file;
}

// Hands out the entry that the stream has come to.
void hand_out(archive* stream, const Bundle::Take& take) {
  std::array<char, kBlock> bytes;
  for (;;) {
    const la_ssize_t got = ::archive_read_data(stream, bytes.data(), bytes.size());
    if (got < 0) check(ARCHIVE_FATAL, stream);
    if (got <= 0 || !take({bytes.data(), static_cast<std::size_t>(got)})) return;
  }
}

}  // namespace

Bundle::Bundle(std::filesystem::path path) : path_(std::move(path)) {
  if (!std::filesystem::exists(path_)) throw Failure(path_.string() + " is not there");
}

void Bundle::read(const std::string& file, const Take& take) const {
  const bool is_found = std::filesystem::is_directory(path_) ? read_from_folder(file, take)
                                                             : read_from_archive(file, take);
  if (!is_found) throw Failure(path_.string() + " is no collection: it has no " + file);
}

bool Bundle::read_from_folder(const std::string& file, const Take& take) const {
  const OutputFolder folder = OutputFolder::existing(std::filesystem::absolute(path_));
  const Descriptor opened = folder.open(file);
  if (!opened.is_open()) return false;
  std::array<char, kBlock> bytes;
  for (;;) {
    const ssize_t got = ::read(opened.get(), bytes.data(), bytes.size());
    if (got < 0) throw Failure(path_.string() + ": " + error_text(errno));
    if (got == 0 || !take({bytes.data(), static_cast<std::size_t>(got)})) return true;
  }
}

bool Bundle::read_from_archive(const std::string& file, const Take& take) const {
  try {
    const Descriptor opened(::open(path_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!opened.is_open()) throw Failure(error_text(errno));
    const Stream stream = reading_stream();
    check(::archive_read_open_fd(stream.get(), opened.get(), kBlock), stream.get());
    archive_entry* entry = nullptr;
    do {
      const int result = ::archive_read_next_header(stream.get(), &entry);
      if (result == ARCHIVE_EOF) return false;
      check(result, stream.get());
    } while (!is_file(entry, file));
    hand_out(stream.get(), take);
    return true;
  } catch (const Failure& failure) {
    throw Failure(path_.string() + " cannot be read: " + failure.what());
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
