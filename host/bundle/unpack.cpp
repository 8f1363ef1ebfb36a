#include "bundle/unpack.h"

#include <unistd.h>

#include <cerrno>
#include <string>
#include <string_view>

#include "bundle/entries.h"
#include "support/failure.h"
#include "support/text.h"

namespace host {

void unpack(const std::filesystem::path& archive, const OutputFolder& folder,
            const SignalWatch& signals) {
  constexpr std::uint64_t kMost = std::uint64_t{16}
                                  << 30U;  // an archive of nothing but zeros is small
  std::uint64_t bytes = 0;
  Descriptor file;
  const auto take_bytes = [&](std::string_view block) {
    if (signals.take()) throw Failure("ended by a signal");
    bytes += block.size();
    if (bytes > kMost) throw Failure("it holds more than " + size_text(kMost));
    if (::write(file.get(), block.data(), block.size()) != static_cast<ssize_t>(block.size())) {
      throw Failure(error_text(errno));
    }
    return true;
  };
  const auto take_file = [&](const std::string& path) -> TakeBytes {
    file = folder.create(path);
    if (!file.is_open()) throw Failure("\"" + path + "\": " + error_text(errno));
    return take_bytes;
  };
  read_archive(archive, take_file, [] { return false; });
}

}  // namespace host
