#include "command_line.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <thread>
#include <utility>

#include "support/failure.h"

namespace host {
namespace {

std::size_t usual_jobs() {
  constexpr std::size_t kMost = 4;
  return std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, kMost);
}

void add_plugin_option(CLI::App& to, CommandLine& line) {
  to.add_option("--plugin", line.plugin, "libsit.so to load instead of the one beside sit")
      ->type_name("FILE");
}

// Refuses what names nothing.
std::string not_empty(const std::string& text) {
  return text.empty() ? "it must not be empty" : std::string();
}

// An option that may be given several times, one value each.
void add_repeated(CLI::App& to, const char* name, std::vector<std::string>& values,
                  const char* what, const char* form) {
  to.add_option(name, values, what)->type_name(form)->allow_extra_args(false)->check(not_empty);
}

void describe_what_is_collected(CLI::App& collect, CommandLine& line) {
  CollectOptions& options = line.collect;
  const char* group = "What is collected";
  add_repeated(collect, "--installation", options.installations,
               "a Pelloran installation, instead of that which PHM names", "DIR");
  collect
      .add_option("--monitoring", options.monitoring,
                  "init file of the monitoring product, instead of that which DELVONINIT names")
      ->type_name("FILE")
      ->check(not_empty);
  add_repeated(collect, "--netscape", line.netscape, "a Netscape/iPlanet server", "ROOT[,NAME]");
  add_repeated(collect, "--apache", options.wishes.apache, "an Apache server", "ROOT");
  add_repeated(collect, "--capture", options.wishes.commands, "run a command, keep what it prints",
               "COMMAND");
  add_repeated(collect, "--capture-library", line.libraries,
               "call an entry point, keep the files it writes", "PATH,ENTRY");
  add_repeated(collect, "--capture-file", options.capture_files,
               "a file that tells of more commands to run", "FILE");
  collect.add_flag("!--no-extras", options.has_extras, "none of the usual commands besides");
  add_repeated(collect, "--brokers", options.wishes.brokers,
               "copy only the logs of this broker, \"db:\" database, or \"admsrv\"", "NAME");
  add_repeated(collect, "--mask-rules", options.mask_rules,
               "a file that tells of more secrets to mask", "FILE");
  add_repeated(collect, "--findings", options.findings,
               "a file that tells of more that is wrong when a report or log says so", "FILE");
  collect.add_flag("--unmasked", options.is_unmasked, "leave secrets as they are");
  add_repeated(collect, "--only", options.selection.only,
               "only this step, this kind of step or this installation", "ID");
  add_repeated(collect, "--skip", options.selection.skip, "all but these", "ID");
  collect.add_flag("--list-steps", options.lists_steps, "show the steps, and do nothing");
  collect.add_flag("--verbose", options.settings.verbose, "diagnostic lines in the reports");
  for (CLI::Option* option : collect.get_options()) {
    if (option->get_name() != "--help") option->group(group);
  }
}

// Refuses what is no number of seconds up to the longest.
std::function<std::string(const std::string&)> seconds_up_to(double longest) {
  return [longest](const std::string& text) {
    constexpr double kShortest = 0.1;
    double seconds = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, seconds);
    const bool is_number = error == std::errc() && stop == end;
    if (is_number && seconds >= kShortest && seconds <= longest) return std::string();
    return "\"" + text + "\" is no number from 0.1 to " + std::to_string(std::lround(longest));
  };
}

void describe_how(CLI::App& collect, CommandLine& line) {
  CollectOptions& options = line.collect;
  constexpr double kLongestCommand = 59;  // the plug-in itself gives up after a minute
  constexpr double kLongestRun = 1e6;
  constexpr std::size_t kMostJobs = 64;
  constexpr std::uint64_t kLeastCap = 4 << 10;
  constexpr std::uint64_t kMostCap = std::uint64_t{1} << 60U;
  add_plugin_option(collect, line);
  collect.add_option("--output", options.output, "where the archive is made (default: here)")
      ->type_name("DIR")
      ->check(not_empty);
  collect.add_option("--label", options.label, "goes into names, summary and manifest")
      ->type_name("TEXT");
  collect
      .add_option("--command-limit", options.limits.command,
                  "how long a command may take (default: 55)")
      ->type_name("SECONDS")
      ->check(seconds_up_to(kLongestCommand));
  collect
      .add_option("--time-limit", options.limits.run, "how long all may take (default: any time)")
      ->type_name("SECONDS")
      ->check(seconds_up_to(kLongestRun));
  collect.add_option("--jobs", options.limits.jobs, "subjects at once (default: cores, at most 4)")
      ->type_name("N")
      ->check(CLI::Range(std::size_t{1}, kMostJobs));
  collect.add_option("--format", options.format, "of the archive: xz (default), gz, zst, or none")
      ->type_name("FORM");
  collect.add_option("--max-file", options.caps.file, "a longer file is cut (default: 100 MiB)")
      ->type_name("SIZE")
      ->transform(CLI::AsSizeValue(false))
      ->check(CLI::Range(kLeastCap, kMostCap));
  collect.add_option("--max-total", options.caps.all, "all files together (default: 1 GiB)")
      ->type_name("SIZE")
      ->transform(CLI::AsSizeValue(false))
      ->check(CLI::Range(kLeastCap, kMostCap));
  collect
      .add_option("--progress", options.progress,
                  "on standard error: auto (default), plain, or json")
      ->type_name("FORM");
}

// Takes a text apart at its last comma.
std::pair<std::string, std::string> pair_of(const std::string& text) {
  const std::size_t comma = text.rfind(',');
  if (comma == std::string::npos) return {text, ""};
  return {text.substr(0, comma), text.substr(comma + 1)};
}

// The words of the command line without that which names the subcommand.
std::vector<std::string> options_of(std::vector<std::string> words) {
  auto subcommand = std::find(words.begin(), words.end(), "collect");
  const bool is_value =
      subcommand != words.begin() && subcommand != words.end() && *(subcommand - 1) == "--plugin";
  if (is_value) subcommand = std::find(subcommand + 1, words.end(), "collect");
  if (subcommand != words.end()) words.erase(subcommand);
  return words;
}

}  // namespace

void describe(CLI::App& app, CommandLine& line) {
  line.collect.limits.jobs = usual_jobs();
  add_plugin_option(app, line);
  app.add_flag("--version", line.version, "print the plug-in's version");
  app.add_option("--completion", line.completion, "print what a shell needs to complete words")
      ->type_name("SHELL")
      ->check(CLI::IsMember({"bash", "zsh", "fish"}));
  app.require_subcommand(0, 1);

  CLI::App* collect = app.add_subcommand("collect", "write this machine's reports into an archive");
  describe_what_is_collected(*collect, line);
  describe_how(*collect, line);

  CLI::App* mask = app.add_subcommand("mask", "mask the secrets of a collection that is there");
  mask->add_option("bundle", line.remask.bundle,
                   "its folder, or its archive: a new one is made beside it")
      ->required()
      ->check(CLI::ExistingPath);
  add_repeated(*mask, "--mask-rules", line.remask.mask_rules,
               "a file that tells of more secrets to mask", "FILE");
  mask->add_option("--format", line.remask.format,
                   "of the new archive: xz (default), gz, zst, none")
      ->type_name("FORM");

  CLI::App* show = app.add_subcommand("show", "print what a collection holds");
  show->add_option("bundle", line.show.bundle, "its archive or folder")->required();
  show->add_option("what", line.show.what,
                   "a row's id, a file or the title of a section (default: the summary)");

  CLI::App* diff = app.add_subcommand("diff", "tell what changed from one collection to another");
  diff->add_option("old", line.diff.old_bundle, "the earlier one's archive or folder")->required();
  diff->add_option("new", line.diff.new_bundle, "the later one's")->required();
  add_repeated(*diff, "--rules", line.diff.rules, "a file that tells of more that does not matter",
               "FILE");

  CLI::App* fleet = app.add_subcommand("fleet", "write a page about the collections in a folder");
  fleet->add_option("folder", line.fleet.folder, "of archives and folders, however they came there")
      ->required();
  fleet->add_option("--output", line.fleet.output, "where text and data are written instead")
      ->type_name("DIR");
  add_repeated(*fleet, "--rules", line.fleet.rules, "a file that tells what makes findings alike",
               "FILE");

  CLI::App* call = app.add_subcommand("call", "call one function of the catalogue");
  add_plugin_option(*call, line);
  call->add_flag("--verbose", line.collect.settings.verbose, "diagnostic lines in the report");
  call->add_flag("--independent", line.independent, "work without any installation");
  call->add_option("name", line.call_name, "the function; its arguments follow")->required();
  // Whatever follows the name is the function's, numbers below zero included.
  call->prefix_command();

  app.add_subcommand("list", "show the catalogue: functions, arguments, what each writes");
}

void complete(CommandLine& line, const std::vector<std::string>& words) {
  line.collect.as_given = options_of(words);
  for (const std::string& text : line.netscape) {
    line.collect.wishes.netscape.push_back(pair_of(text));
  }
  for (const std::string& text : line.libraries) {
    line.collect.wishes.libraries.push_back(pair_of(text));
    if (line.collect.wishes.libraries.back().second.empty()) {
      throw UsageError("--capture-library takes PATH,ENTRY, not \"" + text + "\"");
    }
  }
}

}  // namespace host
