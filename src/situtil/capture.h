// Copying what a command printed into the open report.
#pragma once

#include "situtil/input.h"
#include "situtil/start.h"
#include "situtil/temp_file.h"

namespace sit {

// Runs the command into the file, seals that and says in the report when output may be lost.
Outcome run_into(const char* command, TempFile& output) noexcept;

// A copy need not look at lines: it goes by whole blocks, each flushed. Returns 0, or the error
// that kept it from reading on.
int copy_into_report(Input& input) noexcept;

}  // namespace sit
