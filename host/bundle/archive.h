// One file that holds a whole collection.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "run/signal_watch.h"
#include "support/folder.h"

namespace host {

struct ArchiveFormat {
  const char* name;    // as --format takes it
  const char* filter;  // what packs it
  const char* options;
};

// Nothing for "none". Throws UsageError for an unknown name.
[[nodiscard]] const ArchiveFormat* find_archive_format(const std::string& name);

// Packs these files of the folder into a new archive beside it, reads it back, and puts its SHA-256
// beside it. Only the owner may read both; that is who called sudo, if somebody did. Returns the
// archive's path. Throws Failure, and leaves nothing behind, where that cannot be done or a signal
// asks for the end.
std::filesystem::path pack(const OutputFolder& folder, const std::vector<std::string>& files,
                           const ArchiveFormat& format, const SignalWatch& signals);

}  // namespace host
