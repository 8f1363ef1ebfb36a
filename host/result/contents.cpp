#include "result/contents.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>

#include "support/text.h"

namespace host {
namespace {

namespace fs = std::filesystem;

// Below this length a file would be little more than the line that tells of the cut.
constexpr std::uint64_t kLeast = 1024;

// Lists what is below this folder, whose path in the collection ends in "/" or is empty.
void list_into(Contents& contents, const OutputFolder& whole, const std::string& folder) {
  std::error_code error;
  std::vector<std::string> names;
  for (fs::directory_iterator entry(whole.way() / folder, error), end; entry != end;
       entry.increment(error)) {
    names.push_back(folder + entry->path().filename().string());
  }
  if (error) contents.absent.push_back({folder, "cannot be read: " + error_text(error.value())});
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) {
    const fs::file_type type = fs::symlink_status(whole.way() / name, error).type();
    if (type == fs::file_type::directory) {
      list_into(contents, whole, name + "/");
    } else if (type != fs::file_type::regular) {
      contents.absent.push_back({name, "it is no file"});
    } else if (!whole.open(name).is_open()) {
      contents.absent.push_back({name, "cannot be read: " + error_text(errno)});
    } else {
      contents.files.push_back(name);
    }
  }
}

// The length to which files must be cut so that all of them together keep to `all`.
std::uint64_t longest_for(std::vector<std::uint64_t> sizes, std::uint64_t all) {
  std::sort(sizes.begin(), sizes.end());
  std::uint64_t left = all;
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    const std::uint64_t share = left / (sizes.size() - i);
    if (sizes[i] > share) return std::max(share, kLeast);
    left -= sizes[i];
  }
  return UINT64_MAX;
}

bool copy(int from, std::uint64_t begin, std::uint64_t end, int to) {
  std::array<char, 65536> bytes;
  while (begin < end) {
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), end - begin));
    const ssize_t got = ::pread(from, bytes.data(), wanted, static_cast<off_t>(begin));
    if (got <= 0 || ::write(to, bytes.data(), static_cast<std::size_t>(got)) != got) return false;
    begin += static_cast<std::uint64_t>(got);
  }
  return true;
}

// Puts a shorter file in the place of this one: the old one may have other names, elsewhere.
// Returns the number of bytes left out; 0 when that cannot be done.
std::uint64_t cut(const OutputFolder& folder, const std::string& file, std::uint64_t size,
                  std::uint64_t longest) {
  const std::string shorter = file + ".cut";
  const std::uint64_t half = longest / 2;
  const std::uint64_t left_out = size - 2 * half;
  const std::string line = "\n\n[sit: " + std::to_string(left_out) + " bytes of " +
                           std::to_string(size) + " are left out here]\n\n";
  const Descriptor from = folder.open(file);
  const Descriptor to = folder.create(shorter);
  const bool is_cut =
      from.is_open() && to.is_open() && copy(from.get(), 0, half, to.get()) &&
      ::write(to.get(), line.data(), line.size()) == static_cast<ssize_t>(line.size()) &&
      copy(from.get(), size - half, size, to.get()) &&
      ::renameat(folder.descriptor(), shorter.c_str(), folder.descriptor(), file.c_str()) == 0;
  if (is_cut) return left_out;
  if (to.is_open()) folder.remove(shorter);
  return 0;
}

}  // namespace

Contents list(const OutputFolder& folder) {
  Contents contents;
  list_into(contents, folder, "");
  return contents;
}

void cut_to(const Caps& caps, const OutputFolder& folder, Contents& contents) {
  const auto cap_of = [&caps](const std::string& file) {
    const auto own = caps.own.find(file);
    return own == caps.own.end() ? caps.file : std::min(own->second, caps.file);
  };
  std::vector<std::uint64_t> sizes;
  for (const std::string& file : contents.files) {
    sizes.push_back(std::min(folder.size_of(file), cap_of(file)));
  }
  const std::uint64_t longest = longest_for(sizes, caps.all);
  for (const std::string& file : contents.files) {
    const std::uint64_t size = folder.size_of(file);
    const std::uint64_t most = std::min(cap_of(file), longest);
    if (size <= most) continue;
    const std::uint64_t left_out = cut(folder, file, size, most);
    const bool is_meant = left_out != 0 && most < std::min(caps.file, longest);
    contents.cuts.push_back({file, size, left_out, is_meant});
  }
}

}  // namespace host
