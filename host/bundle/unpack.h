// Taking an archive of a collection apart again.
#pragma once

#include <filesystem>

#include "run/signal_watch.h"
#include "support/folder.h"

namespace host {

// Unpacks it into the folder. Throws Failure, and what the folder holds is then of no use, for what
// is no such archive: one that is cut short, or holds anything but files in one folder.
void unpack(const std::filesystem::path& archive, const OutputFolder& folder,
            const SignalWatch& signals);

}  // namespace host
