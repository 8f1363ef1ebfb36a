// Every session call, query and command that the plug-in offers, as data.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "plugin.h"
#include "support/failure.h"

namespace host {

// What a call gave back: a number, a text, or neither.
struct Outcome {
  std::optional<int> code;
  std::optional<std::string> text;
};

struct Entry {
  std::string name = {};
  std::vector<std::string> argument_names = {};
  std::string writes = {};
  // Meanings of the number where they differ from the common result codes.
  std::map<int, std::string> meanings = {};
  bool number_is_an_answer = false;

  // Taken from the declaration.
  std::vector<std::string> argument_types = {};
  Outcome (*caller)(const Plugin&, const Entry&, std::span<const std::string>) = nullptr;

  // As many arguments as there are names. Throws UsageError when one is not of its type.
  [[nodiscard]] Outcome call(const Plugin& plugin, std::span<const std::string> given) const {
    return caller(plugin, *this, given);
  }
};

[[nodiscard]] const std::vector<Entry>& catalogue();

// Of all that the host uses of the plug-in.
[[nodiscard]] std::vector<std::string> plugin_names();

// Throws UsageError when there is no such entry.
[[nodiscard]] const Entry& find_entry(const std::string& name);

}  // namespace host
