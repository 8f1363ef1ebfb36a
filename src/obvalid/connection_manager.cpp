// Validation of the connection manager's properties by the installation's tool dbconfig.
#include <string_view>

#include "commfile.h"
#include "obvalid/obvalid.h"
#include "sit/situtil.h"
#include "situtil/command.h"

namespace {

constexpr int kNoMemory = 1;

sit::Path own_properties(const PHMVER& record) noexcept {
  sit::Path path;
  static_cast<void>(
      sit::compose(path, "The path", {sit::text_of(record.dir), "/properties/conmgr.properties"}));
  return path;
}

// The blanks are those of the tool's documented command line.
void run_tool(const char* tool, std::string_view properties) noexcept {
  sit::Command command;
  command.raw("  ").quoted(tool).raw(" ").quoted(properties).raw("  ").run();
}

}  // namespace

extern "C" int ValidateConMgr(PHMVER* record, const char* properties, int copy,
                              const char* destination) noexcept {
  if (record == nullptr) return SIT_FAILED;
  sit::Path tool;
  if (!sit::compose(tool, "The path", {sit::text_of(record->dir), "/bin/dbconfig"}) ||
      FileExists(tool.c_str()) == 0) {
    return SIT_NO_DATABASE_TOOL;
  }
  if (!sit::choose_file(record->conmgrFile, properties,
                        [record] { return own_properties(*record); })) {
    LogMsg("ERROR: Invalid Connection Manager properties file name\n");
    return kNoMemory;
  }
  const char* file = record->conmgrFile;
  if (!sit::is_file(file, "Connection Manager properties file")) return SIT_NO_CONMGR_PROPERTIES;
  LogMsg("VALIDATING: %s\n\n", file);
  run_tool(tool.c_str(), file);
  Populate_Logs_Table_ConMgr(file, record->version);
  if (copy == 0) return SIT_OK;
  return sit::copy_properties(*record, file, destination, "\nINFORMATION: Copying %s as %s...\n\n");
}
