// What the fuzz targets stand on. A target feeds one parser through the exported functions; the
// environment variable FUZZ_TARGET names the one that this process runs.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "sit/sit.h"

namespace fuzz {

// What a target needs of this process, which can run nothing and sees the machine as it is.
enum class Needs { kNothing, kChildren, kPrivateLauncher };

// Puts itself on the list of targets.
class Target {
 public:
  using Feed = void (*)(std::string_view input);
  Target(const char* name, Feed feed, Needs needs = Needs::kNothing) noexcept;
  static const Target* find(std::string_view name) noexcept;

  void run(std::string_view input) const { feed_(input); }
  [[nodiscard]] Needs needs() const noexcept { return needs_; }

 private:
  const char* name_;
  Feed feed_;
  Needs needs_;
  const Target* next_;
};

// A file or directory of this process's own scratch folder.
std::string scratch(std::string_view name);

// Makes `input` the content of the file at `path`.
void write_file(const std::string& path, std::string_view input);

// The same for a file of the scratch folder; gives its path.
std::string file(std::string_view name, std::string_view input);

// Makes a tool that prints a file of the scratch folder, and gives the tool's path.
std::string tool_that_prints(std::string_view name);

// The input as a C text with not a byte behind its terminator, so that reading on is noticed.
using Text = std::unique_ptr<char[]>;
Text text(std::string_view input);

struct FreeRecord {
  void operator()(PHMVER* record) const noexcept;
};
using Record = std::unique_ptr<PHMVER, FreeRecord>;

// The record of an installation in the scratch folder; its version may be null.
Record installation(const char* version);

// Where the library's messages about versions go; nobody reads them.
FILE* nowhere();

// The launcher of a target that needs a private one: all that there is in /usr/bin.
inline constexpr const char* kLauncher = "/usr/bin/pel";

}  // namespace fuzz

// The entry points of libFuzzer, which replay.cpp calls, too.
extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments);
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);
