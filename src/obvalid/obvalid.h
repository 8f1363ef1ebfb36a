// The broker and admin-server configuration of an installation.
#pragma once

#include <optional>
#include <string_view>

#include "obvalid/parameter_files.h"
#include "sit/obvalid.h"
#include "situtil/lines.h"
#include "situtil/path.h"

namespace sit::obvalid {

// Whether properties files are copied after their validation, and where to.
struct Copies {
  bool are_wanted;
  const char* destination;
};

// As ValidateOB and ValidateConMgr.
[[nodiscard]] int validate_brokers(PHMVER& record, const char* plugins_file, const char* broker,
                                   const Copies& copies) noexcept;
[[nodiscard]] int validate_connection_manager(PHMVER& record, const char* properties,
                                              const Copies& copies) noexcept;

// As Copy_Log_Files and CopyAdmSrvLogs.
[[nodiscard]] int copy_logs(std::string_view name, const char* version,
                            const char* destination) noexcept;
[[nodiscard]] int copy_admin_server_logs_from(const char* directory,
                                              const char* destination) noexcept;

// ---- Check tools ----

struct Check {
  const char* version;
  const char* tool;
  std::string_view broker;                   // empty for all
  std::optional<std::string_view> location;  // of the properties file; nothing for the tool's own
  std::string_view type;
};

// As ValidateOBInstance; the brokers' parameter files join those that are there.
[[nodiscard]] int run_check(const Check& check, ParameterFiles& parameter_files) noexcept;

// The broker that a header line names: what stands behind its last point, or else behind the
// header's words.
[[nodiscard]] std::string_view broker_named_in(std::string_view header) noexcept;

// Takes the value of a line's key as ReadPropertyValue_From_Validation does.
[[nodiscard]] int read_value(std::string_view line, std::string_view key, LineText& value) noexcept;

}  // namespace sit::obvalid
