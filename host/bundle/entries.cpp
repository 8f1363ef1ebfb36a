#include "bundle/entries.h"

#include <fcntl.h>

#include <array>

#include "bundle/stream.h"
#include "support/descriptor.h"

namespace host {
namespace {

constexpr std::size_t kBlock = 65536;

// The path of a file below the collection's folder. Throws Failure for one that leads elsewhere.
std::string path_below(std::string_view name) {
  const auto refuse = [&name] {
    throw Failure("it holds \"" + std::string(name) + "\", which leads out of it");
  };
  std::string path;
  std::size_t parts = 0;
  for (std::string_view rest = name; !rest.empty(); ++parts) {
    const std::string_view part = rest.substr(0, rest.find('/'));
    if (part.empty() || part == "." || part == "..") refuse();
    if (parts > 0) path += (path.empty() ? "" : "/") + std::string(part);
    rest.remove_prefix(std::min(rest.size(), part.size() + 1));
  }
  if (path.empty()) refuse();
  return path;
}

std::string path_of(archive_entry* entry) {
  const char* name = ::archive_entry_pathname(entry);
  if (::archive_entry_filetype(entry) != AE_IFREG || ::archive_entry_hardlink(entry) != nullptr ||
      name == nullptr) {
    throw Failure("it holds \"" + std::string(name == nullptr ? "" : name) +
                  "\", which is no file");
  }
  return path_below(name);
}

void hand_out(archive* stream, const TakeBytes& take) {
  std::array<char, kBlock> bytes;
  while (take) {
    const la_ssize_t got = ::archive_read_data(stream, bytes.data(), bytes.size());
    if (got < 0) check(ARCHIVE_FATAL, stream);
    if (got <= 0 || !take({bytes.data(), static_cast<std::size_t>(got)})) return;
  }
}

}  // namespace

void read_archive(const std::filesystem::path& archive, const TakeFile& take,
                  const std::function<bool()>& is_enough) {
  try {
    const Descriptor file(::open(archive.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.is_open()) throw Failure(error_text(errno));
    const Stream stream = reading_stream();
    check(::archive_read_open_fd(stream.get(), file.get(), kBlock), stream.get());
    archive_entry* entry = nullptr;
    bool is_empty = true;
    while (!is_enough()) {
      const int result = ::archive_read_next_header(stream.get(), &entry);
      if (result == ARCHIVE_EOF && is_empty) throw Failure("it is empty");
      if (result == ARCHIVE_EOF) return;
      check(result, stream.get());
      is_empty = false;
      // A folder that was packed by hand has entries of its own folders.
      if (::archive_entry_filetype(entry) == AE_IFDIR) continue;
      hand_out(stream.get(), take(path_of(entry)));
    }
  } catch (const Failure& failure) {
    throw Failure(archive.string() + " is no archive of a collection: " + failure.what());
  }
}

}  // namespace host
