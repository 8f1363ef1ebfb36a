// The log table: what check tools and the connection manager's properties tell of log files.
#pragma once

#include <span>
#include <string_view>

#include "sit/obvalid.h"

namespace sit::obvalid {

// The records in use.
[[nodiscard]] std::span<const LogEntry> noted_logs() noexcept;

// Whether the record is of this version and name, ignoring case.
[[nodiscard]] bool is_log_of(const LogEntry& entry, const char* version,
                             std::string_view name) noexcept;

// As Populate_Logs_Table, Populate_Logs_Table_ConMgr and List_log_table.
void note_log(std::string_view line, const char* version, std::string_view name) noexcept;
void note_database_logs(const char* path, const char* version) noexcept;
int list_logs() noexcept;

}  // namespace sit::obvalid
