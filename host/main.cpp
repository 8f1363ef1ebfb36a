// sit: the host program that runs the diagnostic plug-in.
#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "call.h"
#include "catalogue.h"
#include "collect.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUsage = 2;

struct CommandLine {
  std::optional<std::filesystem::path> plugin;
  bool version = false;
  host::CollectOptions collect;
  std::vector<std::string> netscape;
  std::vector<std::string> libraries;
  bool independent = false;
  std::string call_name;
};

// Reads the command line into `line`, and has the chosen subcommand set in `app`.
void describe(CLI::App& app, CommandLine& line) {
  const auto add_plugin_option = [&line](CLI::App& to) {
    to.add_option("--plugin", line.plugin, "libsit.so to load instead of the one beside sit");
  };
  add_plugin_option(app);
  app.add_flag("--version", line.version, "print the plug-in's version");
  app.require_subcommand(0, 1);

  CLI::App* collect = app.add_subcommand("collect", "write this machine's reports into a folder");
  add_plugin_option(*collect);
  collect->add_option("--output", line.collect.output, "where the folder is made (default: here)");
  const auto add_wish = [collect](const char* name, std::vector<std::string>& values,
                                  const char* what, const char* form) {
    collect->add_option(name, values, what)->type_name(form)->allow_extra_args(false);
  };
  add_wish("--netscape", line.netscape, "a Netscape/iPlanet server", "ROOT[,NAME]");
  add_wish("--apache", line.collect.wishes.apache, "an Apache server", "ROOT");
  add_wish("--capture", line.collect.wishes.commands, "run a command, keep what it prints",
           "COMMAND");
  add_wish("--capture-library", line.libraries, "call an entry point, keep the files it writes",
           "PATH,ENTRY");
  add_wish("--brokers", line.collect.wishes.brokers,
           "copy only the logs of this broker, \"db:\" database, or \"admsrv\"", "NAME");
  collect->add_flag("--verbose", line.collect.verbose, "diagnostic lines in the reports");

  CLI::App* call = app.add_subcommand("call", "call one function of the catalogue");
  add_plugin_option(*call);
  call->add_flag("--verbose", line.collect.verbose, "diagnostic lines in the report");
  call->add_flag("--independent", line.independent, "work without any installation");
  call->add_option("name", line.call_name, "the function; its arguments follow")->required();
  // Whatever follows the name is the function's, numbers below zero included.
  call->prefix_command();

  app.add_subcommand("list", "show the catalogue: functions, arguments, what each writes");
}

// Takes a text apart at its last comma.
std::pair<std::string, std::string> pair_of(const std::string& text) {
  const std::size_t comma = text.rfind(',');
  if (comma == std::string::npos) return {text, ""};
  return {text.substr(0, comma), text.substr(comma + 1)};
}

void complete(CommandLine& line) {
  for (const std::string& text : line.netscape) {
    line.collect.wishes.netscape.push_back(pair_of(text));
  }
  for (const std::string& text : line.libraries) {
    line.collect.wishes.libraries.push_back(pair_of(text));
    if (line.collect.wishes.libraries.back().second.empty()) {
      throw host::UsageError("--capture-library takes PATH,ENTRY, not \"" + text + "\"");
    }
  }
}

int run_chosen(const CLI::App& app, const CommandLine& line) {
  if (app.got_subcommand("list")) {
    host::list_catalogue();
    return 0;
  }
  std::vector<std::string> names = host::catalogue_names();
  for (const char* used :
       {"pphm", "logs", "RmPatchInfoPHM", "IsCorrectProduct", "FindAdminServer"}) {
    names.emplace_back(used);
  }
  const host::Plugin plugin(line.plugin, names);
  if (line.version) {
    std::cout << "sit " << *host::find_entry("GetAPIVersion").call(plugin, {}).text << "\n";
    return 0;
  }
  if (app.got_subcommand("collect")) return host::collect(plugin, line.collect);
  const auto set = [&plugin](const std::string& name) {
    static_cast<void>(host::find_entry(name).call(plugin, std::vector<std::string>{"1"}));
  };
  if (line.collect.verbose) set("SetVerboseMode");
  if (line.independent) set("SetPelloranIndependent");
  return host::call(plugin, line.call_name, app.get_subcommand("call")->remaining());
}

int run(int argc, char** argv) {
  CLI::App app{"Collects diagnostic reports about this machine and its Pelloran products."};
  CommandLine line;
  describe(app, line);
  try {
    app.parse(argc, argv);
    if (!line.version && app.get_subcommands().empty()) {
      throw host::UsageError("nothing to do; try sit --help");
    }
    complete(line);
    return run_chosen(app, line);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kWrongUsage;
  } catch (const host::UsageError& error) {
    std::cerr << "sit: " << error.what() << "\n";
    return kWrongUsage;
  } catch (const std::exception& error) {
    std::cerr << "sit: " << error.what() << "\n";
    return kFailed;
  }
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (...) {
    return kFailed;
  }
}
