// The command line of sit.
#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "collect.h"
#include "diff/diff.h"
#include "fleet/fleet.h"
#include "remask.h"
#include "show.h"

namespace host {

struct CommandLine {
  std::optional<std::filesystem::path> plugin;
  bool version = false;
  CollectOptions collect;
  std::vector<std::string> netscape;
  std::vector<std::string> libraries;
  bool independent = false;
  std::string call_name;
  RemaskOptions remask;
  std::string completion;  // the shell
  ShowOptions show;
  DiffOptions diff;
  FleetOptions fleet;
};

// Has `app` read the command line into `line`, the chosen subcommand included.
void describe(CLI::App& app, CommandLine& line);

// Makes of what was read what the subcommands take; the words are those of the command line. Throws
// UsageError.
void complete(CommandLine& line, const std::vector<std::string>& words);

}  // namespace host
