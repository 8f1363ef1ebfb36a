// Validation of the broker properties file by the installation's check tools.
#include "commfile.h"
#include "obvalid/obvalid.h"
#include "sit/situtil.h"

const CheckTool scripts[SIT_CHECK_TOOLS] = {
    {"rgconfig", "Registry"}, {"wpconfig", "WP"},         {"apconfig", "AP"},  {"hgaconfig", "HGA"},
    {"dxconfig", "DX"},       {"bridgeconfig", "Bridge"}, {"wgaconfig", "WGA"}};

namespace {

constexpr int kCheckFailed = 1;

struct Checks {
  int current_status;  // first the plugins file's, then that of the tool run last
  int tools = 0;
  bool failed = false;
};

void write_banner(const char* type) noexcept {
  const sit::RuleText rule = sit::rule('#', 86);
  LogMsg("\n\n%s\n#\n# ", rule.c_str());
  LogMsg("VALIDATION FOR TYPE: %s\n", type);
  LogMsg("#\n%s\n", rule.c_str());
}

// Runs one tool, if the installation has it. True when the broker that is looked for was found.
bool check(const PHMVER& record, const CheckTool& script, const char* broker,
           Checks& checks) noexcept {
  sit::Path tool;
  if (!sit::compose(tool, "The path", {sit::text_of(record.dir), "/bin/", script.tool})) {
    return false;
  }
  LogMsgV("Trying to locate %s\n", tool.c_str());
  if (FileExists(tool.c_str()) == 0) {
    LogMsgV("Could not find %s\n", tool.c_str());
    return false;
  }
  ++checks.tools;
  write_banner(script.type);
  checks.current_status =
      ValidateOBInstance(record.version, tool.c_str(), broker, obroker, script.type);
  if (checks.current_status != SIT_OK) {
    checks.failed = true;
    return false;
  }
  if (sit::is_missing(broker)) return false;
  // That the tools before do not know the broker is no failure.
  checks.failed = false;
  return true;
}

void run_check_tools(const PHMVER& record, const char* broker, Checks& checks) noexcept {
  LogMsg("VALIDATING: %s\n\n", obroker);
  for (const CheckTool& script : scripts) {
    if (check(record, script, broker, checks)) break;
  }
  if (checks.tools != 0) return;
  LogMsg("\nINFORMATION: This instalation does not provide any validation script.\n");
  LogMsg("             Cannot validate Ostrel Broker properties.\n");
}

int copy_broker_properties(const PHMVER& record, const sit::BrokerLocation& location,
                           const Checks& checks, const char* destination) noexcept {
  // Without a tool, only the installation's own file is known to be the brokers'.
  const bool is_own_file = location.is_default && location.exists;
  if (checks.tools == 0 && !is_own_file) {
    LogMsg(
        "INFORMATION: This installation does not use the obroker properties file. Skipping file "
        "copy\n");
    return checks.current_status;
  }
  const int copied =
      sit::copy_properties(record, obroker, destination, "\nINFORMATION: Copying %s as %s\n\n");
  return copied != SIT_OK ? copied : checks.current_status;
}

}  // namespace

extern "C" int ValidateOB(PHMVER* record, const char* plugins_file, const char* broker, int copy,
                          const char* destination) noexcept {
  if (record == nullptr) return SIT_FAILED;
  sit::forget_parameter_files();
  const sit::BrokerLocation location = sit::locate_broker_properties(*record, plugins_file);
  if (location.code != SIT_OK) return location.code;
  Checks checks{.current_status = location.status};
  if (location.exists) run_check_tools(*record, broker, checks);
  sit::log_parameter_files(record->dir);
  if (checks.failed) return kCheckFailed;
  if (copy == 0) return checks.current_status;
  return copy_broker_properties(*record, location, checks, destination);
}
