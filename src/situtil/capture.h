// From a command or a file into the open report.
#pragma once

#include "situtil/input.h"
#include "situtil/start.h"
#include "situtil/temp_file.h"

namespace sit {

// Runs the command into the file, seals that and says in the report when output may be lost.
Outcome run_into(const char* command, TempFile& output) noexcept;

// Runs the command and copies what it prints into the report, whether it succeeds or not.
void log_output_of(const char* command) noexcept;

// Runs the command; what it prints stays in the file at `output`.
void keep_output_of(const char* command, const char* output) noexcept;

// A copy need not look at lines: it goes by whole blocks, each flushed. Returns 0, or the error
// that kept it from reading on.
int log_input(Input& input) noexcept;

// Copies the file into the report. Returns 0, or why it could not be opened.
int log_file(const char* path) noexcept;

}  // namespace sit
