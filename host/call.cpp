#include "call.h"

#include <iostream>

#include "catalogue.h"
#include "meaning.h"

namespace host {
namespace {

std::string usage_of(const Entry& entry) {
  std::string usage = entry.name;
  for (std::size_t i = 0; i < entry.argument_names.size(); ++i) {
    usage += " <" + entry.argument_names[i] + ": " + entry.argument_types[i] + ">";
  }
  return usage;
}

}  // namespace

int call(const Plugin& plugin, const std::string& name, const std::vector<std::string>& arguments) {
  const Entry& entry = find_entry(name);
  if (arguments.size() != entry.argument_names.size()) {
    throw UsageError("wrong number of arguments; usage: sit call " + usage_of(entry));
  }
  const Outcome outcome = entry.call(plugin, arguments);
  if (outcome.text) {
    std::cout << *outcome.text << (outcome.text->ends_with('\n') ? "" : "\n");
  }
  if (!outcome.code) return 0;
  std::cout << name << " returned " << *outcome.code << ": " << meaning_of(entry, *outcome.code)
            << "\n";
  return *outcome.code == 0 || entry.number_is_an_answer ? 0 : 1;
}

void list_catalogue() {
  for (const Entry& entry : catalogue()) {
    std::cout << usage_of(entry) << "\n    writes " << entry.writes << "\n";
  }
}

}  // namespace host
