// The machines of a fleet, by their collections.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

namespace host {

// What came of a machine, from well to bad.
enum class MachineState { kComplete, kPartial, kUnreadable, kFailed, kUnreachable };

[[nodiscard]] const char* text_of(MachineState state);

struct Machine {
  std::string name;  // its label, or its own name
  MachineState state = MachineState::kComplete;
  std::string why;
  std::string started;
  std::string bundle;  // below the fleet's folder; empty: none
  std::string page;    // to be read in a browser: the same, or the page in it
  std::vector<std::string> findings;
  std::map<std::string, std::string> facts;  // that may differ from machine to machine
};

struct Fleet {
  std::vector<Machine> machines;    // by their names
  std::vector<std::string> passed;  // collections that are older than another of their machine
};

// Looks through the folder: archives, folders of collections, and what fleet-status.json tells of
// machines that could not be collected. Whatever cannot be read costs its machine alone.
[[nodiscard]] Fleet find_machines(const std::filesystem::path& folder);

}  // namespace host
