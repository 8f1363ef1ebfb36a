// Validation of the broker properties file by the installation's check tools.
#include <span>
#include <string_view>

#include "commfile.h"
#include "commutils/text.h"
#include "commutils/views.h"
#include "file_status.h"
#include "obvalid/location.h"
#include "obvalid/obvalid.h"
#include "obvalid/properties.h"

namespace sit::obvalid {
namespace {

constexpr int kCheckFailed = 1;

// One validation as far as it has come.
struct Validation {
  const PHMVER& record;
  std::string_view broker;
  BrokerLocation location;
  ParameterFiles parameter_files;
  int status;  // first the plugins file's, then that of the tool run last
  int tools = 0;
  bool failed = false;
};

void write_banner(const char* type) noexcept {
  const RuleText line = rule('#', 86);
  log("\n\n%s\n#\n# ", line.c_str());
  log("VALIDATION FOR TYPE: %s\n", type);
  log("#\n%s\n", line.c_str());
}

// Runs one tool, if the installation has it. True when the broker that is looked for was found.
bool run_tool(const CheckTool& script, Validation& validation) noexcept {
  Path tool;
  if (!compose_path(tool, {text_of(validation.record.dir), "/bin/", script.tool})) return false;
  log_verbose("Trying to locate %s\n", tool.c_str());
  if (!exists(tool.c_str())) {
    log_verbose("Could not find %s\n", tool.c_str());
    return false;
  }
  const std::string_view location = validation.location.path.view();
  ++validation.tools;
  write_banner(script.type);
  validation.status =
      run_check({.version = validation.record.version,
                 .tool = tool.c_str(),
                 .broker = validation.broker,
                 .location = location.empty() ? std::nullopt : std::optional{location},
                 .type = script.type},
                validation.parameter_files);
  if (validation.status != SIT_OK) {
    validation.failed = true;
    return false;
  }
  if (validation.broker.empty()) return false;
  // That the tools before do not know the broker is no failure.
  validation.failed = false;
  return true;
}

void run_tools(Validation& validation) noexcept {
  log("VALIDATING: %s\n\n", validation.location.path.c_str());
  for (const CheckTool& script : std::span{scripts, SIT_CHECK_TOOLS}) {
    if (run_tool(script, validation)) break;
  }
  if (validation.tools != 0) return;
  log("\nINFORMATION: This instalation does not provide any validation script.\n");
  log("             Cannot validate Ostrel Broker properties.\n");
}

int copy_broker_properties(const Validation& validation, const char* destination) noexcept {
  // Without a tool, only the installation's own file is known to be the brokers'.
  const bool is_own_file = validation.location.is_default && validation.location.exists;
  if (validation.tools == 0 && !is_own_file) {
    log("INFORMATION: This installation does not use the obroker properties file. Skipping file "
        "copy\n");
    return validation.status;
  }
  const int copied = copy_properties(validation.record, validation.location.path.c_str(),
                                     destination, "\nINFORMATION: Copying %s as %s\n\n");
  return copied != SIT_OK ? copied : validation.status;
}

}  // namespace

int validate_brokers(PHMVER& record, const char* plugins_file, const char* broker,
                     const Copies& copies) noexcept {
  const BrokerLocation location = locate_broker_properties(record, plugins_file);
  if (location.code != SIT_OK) return location.code;
  Validation validation{.record = record,
                        .broker = text_of(broker),
                        .location = location,
                        .parameter_files = ParameterFiles{},
                        .status = location.status};
  if (location.exists) run_tools(validation);
  validation.parameter_files.write_section(record.dir);
  if (validation.failed) return kCheckFailed;
  if (!copies.are_wanted) return validation.status;
  return copy_broker_properties(validation, copies.destination);
}

}  // namespace sit::obvalid
