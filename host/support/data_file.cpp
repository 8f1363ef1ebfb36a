#include "support/data_file.h"

#include <algorithm>

#include "support/failure.h"

namespace host {

namespace fs = std::filesystem;

fs::path data_file(const std::string& name) {
  const fs::path here = fs::read_symlink("/proc/self/exe").parent_path();
  for (const fs::path& candidate :
       {here / name, here / SIT_DATA_DIRECTORY / name, fs::path("/etc/sit") / name}) {
    if (fs::exists(candidate)) return candidate;
  }
  throw Failure("cannot find " + name + " beside " + here.string() + "/sit or in " +
                SIT_DATA_DIRECTORY " or in /etc/sit");
}

std::vector<fs::path> data_files(const std::string& name, const std::string& folder,
                                 const std::vector<std::string>& more) {
  std::vector<fs::path> files{data_file(name)};
  std::error_code missing;
  for (fs::directory_iterator entry(fs::path("/etc/sit") / folder, missing), end; entry != end;
       entry.increment(missing)) {
    if (entry->path().extension() == ".yaml") files.push_back(entry->path());
  }
  std::sort(files.begin() + 1, files.end());
  files.insert(files.end(), more.begin(), more.end());
  return files;
}

}  // namespace host
