// "sit call" and "sit list".
#pragma once

#include <string>
#include <vector>

#include "plugin.h"

namespace host {

// Calls one catalogue entry and prints what it gave. Returns the exit status.
int call(const Plugin& plugin, const std::string& name, const std::vector<std::string>& arguments);

void list_catalogue();

}  // namespace host
