// The log table, for the library's own use.
#pragma once

#include <span>
#include <string_view>

#include "sit/obvalid.h"

namespace sit {

// The records in use.
[[nodiscard]] std::span<const LogEntry> noted_logs() noexcept;

// Whether the record is of this version and name, ignoring case.
[[nodiscard]] bool is_log_of(const LogEntry& entry, const char* version,
                             std::string_view name) noexcept;

}  // namespace sit
