#include "sit/obvalid.h"

#include <cerrno>
#include <cstdlib>
#include <utility>

#include "commfile.h"
#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "obvalid/admin_server.h"
#include "obvalid/log_table.h"
#include "obvalid/obvalid.h"
#include "obvalid/parameter_files.h"
#include "obvalid/plugins.h"
#include "situtil/copy.h"
#include "situtil/lines.h"

using namespace sit;

extern "C" {

constinit char obroker[LineText::kBytes] = "";

constinit char* plistpfname = nullptr;

// One record more than is ever used: a full table, too, ends with a record without a name.
constinit LogEntry logs[SIT_LOGS + 1] = {};

const CheckTool scripts[SIT_CHECK_TOOLS] = {
    {"rgconfig", "Registry"}, {"wpconfig", "WP"},         {"apconfig", "AP"},  {"hgaconfig", "HGA"},
    {"dxconfig", "DX"},       {"bridgeconfig", "Bridge"}, {"wgaconfig", "WGA"}};

const AdmSrvLogName AdmSrvLogs[SIT_ADMSRV_LOGS] = {"adminsrv.log",   "AdminSrvConsole.log",
                                                   "cmdhandler.log", "faults.log",
                                                   "general.log",    "asv0.exp"};

}  // extern "C"

namespace {

// The list that the host sees, taken for one call and put back at its end.
class PublishedParameterFiles {
 public:
  PublishedParameterFiles() noexcept : files_(HeapText{std::exchange(plistpfname, nullptr)}) {}
  PublishedParameterFiles(const PublishedParameterFiles&) = delete;
  PublishedParameterFiles& operator=(const PublishedParameterFiles&) = delete;
  ~PublishedParameterFiles() { plistpfname = files_.release().release(); }

  [[nodiscard]] obvalid::ParameterFiles& files() noexcept { return files_; }

 private:
  obvalid::ParameterFiles files_;
};

int publish(const obvalid::Plugins& plugins) noexcept {
  if (plugins.result == OB_LOCATION_FOUND) obvalid::publish_location(plugins.location);
  if (plugins.error != 0) errno = plugins.error;
  return plugins.result;
}

}  // namespace

extern "C" {

void GetAdminServerPluginsFile(const PHMVER* record, char* buffer) noexcept {
  if (buffer == nullptr) return;
  put_text(buffer, record == nullptr ? "" : obvalid::default_plugins_file(*record).view());
}

int ReadPlugins(const PHMVER* record, const char* path) noexcept {
  return record == nullptr ? 0 : publish(obvalid::read_plugins(*record, path));
}

int ReadPluginsV9(const char* path) noexcept { return publish(obvalid::read_blocks(path)); }

int ReadPluginsV10(const char* path) noexcept { return publish(obvalid::read_sections(path)); }

int FindAdminServer(const char* version) noexcept {
  return obvalid::has_admin_server(version) ? 1 : 0;
}

char* GetAdmSrvWrkDir(const char* version) noexcept {
  const obvalid::WorkDirectory directory = obvalid::find_work_directory(version);
  if (directory.given != nullptr) return const_cast<char*>(directory.given);
  return directory.is_known() ? duplicate(directory.found.view()).release() : nullptr;
}

int ValidateOB(PHMVER* record, const char* plugins_file, const char* broker, int copy,
               const char* destination) noexcept {
  if (record == nullptr) return SIT_FAILED;
  std::free(std::exchange(plistpfname, nullptr));
  return obvalid::validate_brokers(*record, plugins_file, broker, {copy != 0, destination});
}

int ValidateOBInstance(const char* version, const char* tool, const char* broker,
                       const char* location, const char* type) noexcept {
  PublishedParameterFiles published;
  return obvalid::run_check(
      {.version = version,
       .tool = tool,
       .broker = text_of(broker),
       .location = is_missing(location) ? std::nullopt : std::optional<std::string_view>{obroker},
       .type = text_of(type)},
      published.files());
}

int SetObjectName(char* buffer, const char* line) noexcept {
  constexpr int kNotKept = 1;
  if (buffer == nullptr) return kNotKept;
  LineText name;
  const bool fits = compose(name, "The name", {obvalid::broker_named_in(text_of(line))});
  put_text(buffer, name.view());
  return fits ? SIT_OK : kNotKept;
}

char* GetPFValue(const char* line) noexcept { return obvalid::parameter_file_in(line).release(); }

void Add_pf_name(const char* directory, const char* value) noexcept {
  PublishedParameterFiles{}.files().add(directory, value);
}

int LogParameterFile(const char* directory, const char* file) noexcept {
  return obvalid::log_parameter_file(text_of(directory), file);
}

int ValidateConMgr(PHMVER* record, const char* properties, int copy,
                   const char* destination) noexcept {
  if (record == nullptr) return SIT_FAILED;
  return obvalid::validate_connection_manager(*record, properties, {copy != 0, destination});
}

int ReadPropertyValue_From_Validation(const char* line, const char* key, char* output) noexcept {
  if (line == nullptr || key == nullptr || output == nullptr) return SIT_FAILED;
  LineText value;
  const int result = obvalid::read_value(line, key, value);
  if (result == SIT_OK) put_text(output, value.view());
  return result;
}

int Populate_Logs_Table(const char* line, const char* version, const char* name) noexcept {
  if (line != nullptr) obvalid::note_log(line, version, text_of(name));
  return 0;
}

int Populate_Logs_Table_ConMgr(const char* path, const char* version) noexcept {
  obvalid::note_database_logs(path, version);
  return 0;
}

int List_log_table() noexcept { return obvalid::list_logs(); }

int Copy_File(const char* source, const char* destination, int trim) noexcept {
  return copy_end_of_file({.source = source, .destination = destination, .trims = trim != 0});
}

int Copy_Log_Files(const char* name, const char* version, const char* destination) noexcept {
  if (name == nullptr || version == nullptr || destination == nullptr) return SIT_FAILED;
  return obvalid::copy_logs(name, version, destination);
}

int CopyAdmSrvLogs(const char* /*version*/, const char* directory,
                   const char* destination) noexcept {
  if (directory == nullptr || destination == nullptr) return SIT_NO_ADMIN_LOGS;
  return obvalid::copy_admin_server_logs_from(directory, destination);
}

}  // extern "C"
