#include "run/product_library.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <vector>

#include "support/descriptor.h"

namespace host {
namespace {

// Filled before the first worker is started and only read from then on.
struct OwnLibraries {
  std::vector<std::string> paths;
  std::string system_directory;
};

OwnLibraries& own() {
  static OwnLibraries libraries;
  return libraries;
}

struct Mapping {
  std::uintptr_t begin = 0;
  std::uintptr_t end = 0;
  std::string_view path;
};

// A line of the list: addresses, permissions and, behind more fields, the path. No path unless the
// mapping is of code.
Mapping read_mapping(std::string_view line) noexcept {
  Mapping mapping;
  constexpr int kHexadecimal = 16;
  const char* end = line.data() + line.size();
  const auto first = std::from_chars(line.data(), end, mapping.begin, kHexadecimal);
  if (first.ptr == end) return mapping;
  const auto last = std::from_chars(first.ptr + 1, end, mapping.end, kHexadecimal);
  const std::string_view rest(last.ptr, static_cast<std::size_t>(end - last.ptr));
  const bool is_code = rest.size() > 4 && rest[3] == 'x';
  const std::size_t slash = rest.find('/');
  if (is_code && slash != std::string_view::npos) mapping.path = rest.substr(slash);
  return mapping;
}

std::string_view directory_of(std::string_view path) noexcept {
  return path.substr(0, path.rfind('/') + 1);
}

bool is_own(std::string_view path) noexcept {
  const OwnLibraries& libraries = own();
  return directory_of(path) == libraries.system_directory ||
         std::find(libraries.paths.begin(), libraries.paths.end(), path) != libraries.paths.end();
}

}  // namespace

void note_own_libraries(const std::string& plugin) {
  OwnLibraries& libraries = own();
  // As the list of mappings has it, whatever links lead there.
  std::error_code missing;
  libraries.paths = {std::filesystem::weakly_canonical(plugin, missing).string()};
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    const Mapping mapping = read_mapping(line);
    if (mapping.path.empty()) continue;
    libraries.paths.emplace_back(mapping.path);
    if (mapping.path.find("/libc.so") != std::string_view::npos ||
        mapping.path.find("/libc-") != std::string_view::npos) {
      libraries.system_directory = directory_of(mapping.path);
    }
  }
}

std::size_t find_product_library(int maps, std::uintptr_t address, std::span<char> name) noexcept {
  std::array<char, 8192> text;
  std::size_t held = 0;
  std::size_t found = 0;
  bool is_certain = false;
  const auto look_at = [&](std::string_view line) {
    const Mapping mapping = read_mapping(line);
    if (mapping.path.empty() || mapping.path.size() > name.size() || is_own(mapping.path)) return;
    const bool holds = address >= mapping.begin && address < mapping.end;
    // What has been loaded last stands first.
    if (is_certain || (found != 0 && !holds)) return;
    is_certain = holds;
    found = mapping.path.size();
    std::memcpy(name.data(), mapping.path.data(), found);
  };
  for (;;) {
    const ssize_t got = ::read(maps, text.data() + held, text.size() - held);
    if (got <= 0) return found;
    held += static_cast<std::size_t>(got);
    std::string_view rest(text.data(), held);
    for (std::size_t end = rest.find('\n'); end != std::string_view::npos; end = rest.find('\n')) {
      look_at(rest.substr(0, end));
      rest.remove_prefix(end + 1);
    }
    held = rest.size() < text.size() ? rest.size() : 0;
    std::memmove(text.data(), rest.data(), held);
  }
}

std::string product_library_of(pid_t pid) {
  const std::string path = "/proc/" + std::to_string(pid) + "/maps";
  const Descriptor maps(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  std::array<char, 4096> name;
  const std::size_t size = maps.is_open() ? find_product_library(maps.get(), 0, name) : 0;
  return {name.data(), size};
}

}  // namespace host
