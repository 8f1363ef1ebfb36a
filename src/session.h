// The session record and the switches: plain state that every floor may read.
#pragma once

#include <cstddef>

#include "sit/session.h"

namespace sit {

inline constexpr const char* kVersion = SIT_VERSION;

inline constexpr std::size_t kHostNameBytes = 255;

// Whether a report is open, as the session knows it.
inline bool report_is_open() noexcept { return pc != nullptr && pc->reportDir[0] != '\0'; }

inline bool is_verbose() noexcept { return IsVerbose != 0; }

inline bool is_product_independent() noexcept { return nopel != 0; }

// As getusername.
[[nodiscard]] const char* user_name() noexcept;

// Writes the host's name into kHostNameBytes. False, with an empty text, when it cannot be had.
bool read_host_name(char* buffer) noexcept;

}  // namespace sit
