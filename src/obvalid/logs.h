// The log table, for the library's own use.
#pragma once

#include <span>
#include <string_view>

#include "obvalid/obvalid.h"
#include "sit/obvalid.h"
#include "situtil/piece_reader.h"

namespace sit {

// The records in use.
[[nodiscard]] std::span<const LogEntry> noted_logs() noexcept;

// Whether the record is of this version and name, ignoring case.
[[nodiscard]] bool is_log_of(const LogEntry& entry, const char* version,
                             std::string_view name) noexcept;

// As ReadPropertyValue_From_Validation and Populate_Logs_Table, for a line that may go on behind
// its piece: a value cut off there is not used, and the report says so.
[[nodiscard]] int read_value(const Piece& line, const char* key, LineText& value) noexcept;
void note_log(const Piece& line, const char* version, const char* name) noexcept;

}  // namespace sit
