// The session record and the switches: plain state that every floor may read.
#pragma once

#include "sit/session.h"

namespace sit {

// Whether a report is open, as the session knows it.
inline bool report_is_open() noexcept { return pc != nullptr && pc->reportDir[0] != '\0'; }

inline bool is_verbose() noexcept { return IsVerbose != 0; }

inline bool is_product_independent() noexcept { return nopel != 0; }

}  // namespace sit
