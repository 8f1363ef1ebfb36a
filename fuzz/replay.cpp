// Runs a fuzz target over files that are there already, without libFuzzer: every file, and every
// file of every folder, that is named.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "support.h"

namespace {

namespace fs = std::filesystem;

int replay(const fs::path& path) {
  if (fs::is_directory(path)) {
    int replayed = 0;
    for (const fs::directory_entry& entry : fs::directory_iterator(path)) {
      replayed += replay(entry.path());
    }
    return replayed;
  }
  std::ifstream stream(path, std::ios::binary);
  if (!stream.is_open()) return 0;
  std::ostringstream content;
  content << stream.rdbuf();
  const std::string input = content.str();
  std::printf("%s\n", path.c_str());
  std::fflush(stdout);  // the last one printed is the one that crashed
  LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(input.data()), input.size());
  return 1;
}

}  // namespace

int main(int count, char** arguments) {
  LLVMFuzzerInitialize(&count, &arguments);
  int replayed = 0;
  for (int i = 1; i < count; ++i) replayed += replay(arguments[i]);
  std::printf("%d inputs\n", replayed);
  return replayed == 0 ? 1 : 0;
}
