// sit: the host program that runs the diagnostic plug-in.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "call.h"
#include "catalogue.h"
#include "collect.h"
#include "command_line.h"
#include "completion.h"
#include "diff/diff.h"
#include "fleet/fleet.h"
#include "plugin.h"
#include "remask.h"
#include "show.h"
#include "support/failure.h"
#include "support/text.h"

namespace {

int run_chosen(const CLI::App& app, host::CommandLine& line) {
  if (!line.completion.empty()) return host::print_completion(app, line.completion);
  if (app.got_subcommand("list")) {
    host::list_catalogue();
    return 0;
  }
  if (app.got_subcommand("mask")) return host::remask(line.remask);
  if (app.got_subcommand("show")) return host::show(line.show);
  if (app.got_subcommand("diff")) return host::diff(line.diff);
  if (app.got_subcommand("fleet")) return host::fleet(line.fleet);
  const std::filesystem::path path =
      line.plugin ? std::filesystem::absolute(*line.plugin) : host::find_plugin();
  if (app.got_subcommand("collect")) {
    line.collect.settings.plugin = path;
    return host::collect(line.collect);
  }
  const host::Plugin plugin(path, host::plugin_names());
  if (line.version) {
    std::cout << "sit " << host::find_entry("GetAPIVersion").call(plugin, {}).text.value_or("?")
              << "\n";
    return 0;
  }
  const auto set = [&plugin](const std::string& name) {
    static_cast<void>(host::find_entry(name).call(plugin, std::vector<std::string>{"1"}));
  };
  if (line.collect.settings.verbose) set("SetVerboseMode");
  if (line.independent) set("SetPelloranIndependent");
  return host::call(plugin, line.call_name, app.get_subcommand("call")->remaining());
}

int run(int argc, char** argv) {
  CLI::App app{"Collects diagnostic reports about this machine and its Pelloran products."};
  host::CommandLine line;
  host::describe(app, line);
  try {
    app.parse(argc, argv);
    if (!line.version && line.completion.empty() && app.get_subcommands().empty()) {
      throw host::UsageError("nothing to do; try sit --help");
    }
    host::complete(line, {argv + 1, argv + argc});
    return run_chosen(app, line);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : host::kWrongUsage;
  } catch (const host::UsageError& error) {
    std::cerr << "sit: " << host::printable(error.what()) << "\n";
    return host::kWrongUsage;
  } catch (const std::exception& error) {
    std::cerr << "sit: " << host::printable(error.what()) << "\n";
    return host::kNothingMade;
  }
}

}  // namespace

int main(int argc, char** argv) {
  // A file of ours must never be opened in the place of a closed standard stream.
  int fd = ::open("/dev/null", O_RDWR);
  while (fd >= 0 && fd <= STDERR_FILENO) fd = ::open("/dev/null", O_RDWR);
  if (fd > STDERR_FILENO) ::close(fd);
  ::umask(host::kOwnerOnlyMask);
  static_cast<void>(std::signal(SIGPIPE, SIG_IGN));
  static_cast<void>(std::signal(SIGXFSZ, SIG_IGN));
  try {
    return run(argc, argv);
  } catch (...) {
    return host::kNothingMade;
  }
}
