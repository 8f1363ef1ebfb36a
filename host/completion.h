// What shells need to complete words of the command line.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace host {

// Prints it for this shell (bash, zsh or fish), from the description of the command line. Returns
// the exit status.
int print_completion(const CLI::App& app, const std::string& shell);

}  // namespace host
