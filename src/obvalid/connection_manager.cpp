// Validation of the connection manager's properties by the installation's tool dbconfig.
#include "commfile.h"
#include "commutils/views.h"
#include "file_status.h"
#include "obvalid/log_table.h"
#include "obvalid/obvalid.h"
#include "obvalid/properties.h"
#include "situtil/command.h"

namespace sit::obvalid {
namespace {

constexpr int kNoMemory = 1;

Path own_properties(const PHMVER& record) noexcept {
  Path path;
  static_cast<void>(compose_path(path, {text_of(record.dir), "/properties/conmgr.properties"}));
  return path;
}

// The blanks are those of the tool's documented command line.
void run_tool(const Path& tool, std::string_view properties) noexcept {
  Command command;
  command.raw("  ").quoted(tool.view()).raw(" ").quoted(properties).raw("  ").run();
}

}  // namespace

int validate_connection_manager(PHMVER& record, const char* properties,
                                const Copies& copies) noexcept {
  Path tool;
  if (!compose_path(tool, {text_of(record.dir), "/bin/dbconfig"}) || !exists(tool.c_str())) {
    return SIT_NO_DATABASE_TOOL;
  }
  if (!choose_file(record.conmgrFile, properties, [&record] { return own_properties(record); })) {
    log("ERROR: Invalid Connection Manager properties file name\n");
    return kNoMemory;
  }
  const char* file = record.conmgrFile;
  if (!is_file(file, "Connection Manager properties file")) return SIT_NO_CONMGR_PROPERTIES;
  log("VALIDATING: %s\n\n", file);
  run_tool(tool, file);
  note_database_logs(file, record.version);
  if (!copies.are_wanted) return SIT_OK;
  return copy_properties(record, file, copies.destination,
                         "\nINFORMATION: Copying %s as %s...\n\n");
}

}  // namespace sit::obvalid
