// Which broker properties file is validated.
#pragma once

#include "sit/obvalid.h"
#include "situtil/lines.h"

namespace sit::obvalid {

struct BrokerLocation {
  int code = SIT_OK;  // another one: the validation ends with it
  int status = 0;     // what reading the plugins file gave
  bool is_default = false;
  bool exists = false;  // else there is nothing to validate
  LineText path;        // published as obroker
};

// Finds it through the plugins file `named`, a missing name standing for the installation's own,
// and writes what it finds and misses into the report.
[[nodiscard]] BrokerLocation locate_broker_properties(PHMVER& record, const char* named) noexcept;

}  // namespace sit::obvalid
