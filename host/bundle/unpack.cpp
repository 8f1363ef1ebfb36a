#include "bundle/unpack.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <string>
#include <string_view>

#include "bundle/stream.h"

namespace host {
namespace {

constexpr std::size_t kBlock = 65536;
constexpr std::uint64_t kMost = std::uint64_t{16}
                                << 30U;  // an archive of nothing but zeros is small

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

void write_entry(archive* stream, const OutputFolder& folder, const std::string& path,
                 std::uint64_t& bytes, const SignalWatch& signals) {
  const Descriptor file = folder.create(path);
  if (!file.is_open()) throw Failure("\"" + path + "\": " + error_text(errno));
  std::array<char, kBlock> block;
  for (;;) {
    if (signals.take()) throw Failure("ended by a signal");
    const la_ssize_t got = ::archive_read_data(stream, block.data(), block.size());
    if (got < 0) check(ARCHIVE_FATAL, stream);
    if (got <= 0) return;
    bytes += static_cast<std::uint64_t>(got);
    if (bytes > kMost) throw Failure("it holds more than " + size_text(kMost));
    if (::write(file.get(), block.data(), static_cast<std::size_t>(got)) != got) {
      throw Failure(error_text(errno));
    }
  }
}

}  // namespace

void unpack(const std::filesystem::path& archive, const OutputFolder& folder,
            const SignalWatch& signals) {
  try {
    const Descriptor file(::open(archive.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!file.is_open()) throw Failure(error_text(errno));
    const Stream stream = reading_stream();
    check(::archive_read_open_fd(stream.get(), file.get(), kBlock), stream.get());
    std::uint64_t bytes = 0;
    archive_entry* entry = nullptr;
    for (;;) {
      const int result = ::archive_read_next_header(stream.get(), &entry);
      if (result == ARCHIVE_EOF) break;
      check(result, stream.get());
      const char* name = ::archive_entry_pathname(entry);
      if (::archive_entry_filetype(entry) != AE_IFREG ||
          ::archive_entry_hardlink(entry) != nullptr || name == nullptr) {
        throw Failure("it holds \"" + std::string(name == nullptr ? "" : name) +
                      "\", which is no file");
      }
      write_entry(stream.get(), folder, path_below(name), bytes, signals);
    }
    if (bytes == 0) throw Failure("it is empty");
  } catch (const Failure& failure) {
    throw Failure(archive.string() + " is no archive of a collection: " + failure.what());
  }
}

}  // namespace host
