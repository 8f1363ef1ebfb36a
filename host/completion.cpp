#include "completion.h"

#include <algorithm>
#include <iostream>
#include <vector>

#include "catalogue.h"
#include "steps/steps.h"

namespace host {
namespace {

// A word that may follow, and what it means.
struct Word {
  std::string text;
  std::string what = {};
};

struct Options {
  std::vector<Word> words;
  std::vector<std::string> with_value;
};

std::vector<const CLI::App*> subcommands_of(const CLI::App& app) {
  return app.get_subcommands(std::function<bool(const CLI::App*)>());
}

Options options_of(const CLI::App& app) {
  Options options;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      options.words.push_back({"--" + name, option->get_description()});
      if (option->get_items_expected_max() > 0) options.with_value.push_back("--" + name);
    }
  }
  return options;
}

// What may stand behind an option, where that is known.
std::vector<std::string> values_of(const std::string& option) {
  std::vector<std::string> values;
  if (option == "--only" || option == "--skip") {
    for (const StepKind& kind : step_kinds()) values.emplace_back(kind.id);
    values.erase(std::unique(values.begin(), values.end()), values.end());
  }
  if (option == "--format") values = {"xz", "gz", "zst", "none"};
  if (option == "--progress") values = {"auto", "plain", "json"};
  if (option == "--completion") values = {"bash", "zsh", "fish"};
  return values;
}

std::vector<std::string> functions() {
  std::vector<std::string> names;
  for (const Entry& entry : catalogue()) names.push_back(entry.name);
  return names;
}

std::string joined(const std::vector<std::string>& texts, const char* between = " ") {
  std::string all;
  for (const std::string& text : texts) all += (all.empty() ? "" : between) + text;
  return all;
}

std::string texts_of(const std::vector<Word>& words) {
  std::vector<std::string> texts;
  texts.reserve(words.size());
  for (const Word& word : words) texts.push_back(word.text);
  return joined(texts);
}

// In single quotes, for any of the shells.
std::string quoted(std::string text) {
  std::erase(text, '\'');
  return "'" + text + "'";
}

void print_bash(const CLI::App& app, std::ostream& out) {
  out << "# bash completion for sit\n_sit() {\n"
         "  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} command=\n"
         "  local i words=\n"
         "  for ((i = 1; i < COMP_CWORD; ++i)); do\n    case ${COMP_WORDS[i]} in\n";
  std::vector<std::string> names;
  for (const CLI::App* command : subcommands_of(app)) names.push_back(command->get_name());
  out << "      " << joined(names, "|")
      << ") command=${COMP_WORDS[i]}; break ;;\n    esac\n  done\n"
      << "  case $before in\n";
  for (const char* option : {"--only", "--skip", "--format", "--progress", "--completion"}) {
    out << "    " << option << ") COMPREPLY=($(compgen -W " << quoted(joined(values_of(option)))
        << " -- \"$word\")); return ;;\n";
  }
  out << "  esac\n  case $command in\n";
  for (const CLI::App* command : subcommands_of(app)) {
    const bool is_call = command->get_name() == "call";
    out << "    " << command->get_name() << ") words="
        << quoted(texts_of(options_of(*command).words) + (is_call ? " " + joined(functions()) : ""))
        << " ;;\n";
  }
  out << "    *) words=" << quoted(texts_of(options_of(app).words) + " " + joined(names)) << " ;;\n"
      << "  esac\n  COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n"
         "  [[ ${#COMPREPLY[@]} -gt 0 ]] || COMPREPLY=($(compgen -f -- \"$word\"))\n}\n"
         "complete -o filenames -F _sit sit\n";
}

void print_zsh_options(const CLI::App& app, std::ostream& out) {
  const Options options = options_of(app);
  for (const Word& word : options.words) {
    std::string what = word.what;
    std::erase_if(what, [](char c) { return c == '[' || c == ']' || c == ':' || c == '\''; });
    const bool has_value = std::ranges::count(options.with_value, word.text) > 0;
    const std::vector<std::string> values = values_of(word.text);
    const std::string action = values.empty() ? ":value:_files" : ":value:(" + joined(values) + ")";
    out << " \\\n        "
        << quoted("*" + word.text + "[" + what + "]" + (has_value ? action : ""));
  }
}

void print_zsh(const CLI::App& app, std::ostream& out) {
  out << "#compdef sit\n_sit() {\n  local curcontext=$curcontext state line\n"
         "  typeset -A opt_args\n  _arguments -C";
  print_zsh_options(app, out);
  out << " \\\n        '1:command:->command' '*::argument:->argument'\n  case $state in\n"
         "    command)\n      local -a commands=(";
  for (const CLI::App* command : subcommands_of(app)) {
    out << "\n        " << quoted(command->get_name() + ":" + command->get_description());
  }
  out << ")\n      _describe command commands ;;\n    argument)\n      case $words[1] in\n";
  for (const CLI::App* command : subcommands_of(app)) {
    out << "        " << command->get_name() << ") _arguments";
    print_zsh_options(*command, out);
    if (command->get_name() == "call") out << " '1:function:(" << joined(functions()) << ")'";
    out << " '*:file:_files' ;;\n";
  }
  out << "      esac ;;\n  esac\n}\n_sit \"$@\"\n";
}

void print_fish_options(const CLI::App& app, const std::string& when, std::ostream& out) {
  const Options options = options_of(app);
  for (const Word& word : options.words) {
    const bool has_value = std::ranges::count(options.with_value, word.text) > 0;
    const std::vector<std::string> values = values_of(word.text);
    out << "complete -c sit -n " << quoted(when) << " -l " << word.text.substr(2)
        << (has_value ? " -r" : "") << (values.empty() ? "" : " -f -a " + quoted(joined(values)))
        << " -d " << quoted(word.what) << "\n";
  }
}

void print_fish(const CLI::App& app, std::ostream& out) {
  out << "# fish completion for sit\n";
  print_fish_options(app, "__fish_use_subcommand", out);
  for (const CLI::App* command : subcommands_of(app)) {
    const std::string& name = command->get_name();
    out << "complete -c sit -f -n __fish_use_subcommand -a " << name << " -d "
        << quoted(command->get_description()) << "\n";
    print_fish_options(*command, "__fish_seen_subcommand_from " + name, out);
  }
  out << "complete -c sit -f -n '__fish_seen_subcommand_from call' -a "
      << quoted(joined(functions())) << "\n";
}

}  // namespace

int print_completion(const CLI::App& app, const std::string& shell) {
  if (shell == "bash") print_bash(app, std::cout);
  if (shell == "zsh") print_zsh(app, std::cout);
  if (shell == "fish") print_fish(app, std::cout);
  return std::cout.flush() ? 0 : 1;
}

}  // namespace host
