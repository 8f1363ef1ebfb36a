// "sit show": what a collection holds, straight from its archive or folder.
#pragma once

#include <filesystem>
#include <string>

namespace host {

struct ShowOptions {
  std::filesystem::path bundle;
  std::string what;  // a row's id, a file, or the title of a section; empty: the summary
};

// Prints it, through a pager on a terminal. Returns the exit status. Throws UsageError when there
// is nothing of the name, or more than one thing.
int show(const ShowOptions& options);

}  // namespace host
