// Feeds a fuzz target files that are there already, without libFuzzer: every file of every folder
// that is named.
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerInitialize(int* count, char*** arguments);
extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size);

int main(int count, char** arguments) {
  namespace fs = std::filesystem;
  LLVMFuzzerInitialize(&count, &arguments);
  int replayed = 0;
  for (int i = 1; i < count; ++i) {
    if (!fs::is_directory(arguments[i])) continue;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(arguments[i])) {
      std::ifstream stream(entry.path(), std::ios::binary);
      const std::string input{std::istreambuf_iterator<char>(stream), {}};
      std::printf("%s\n", entry.path().c_str());
      std::fflush(stdout);  // the last one printed is the one that crashed
      LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(input.data()), input.size());
      ++replayed;
    }
  }
  return replayed == 0 ? 1 : 0;
}
