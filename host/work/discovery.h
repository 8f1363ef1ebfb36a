// Finding the installations, in a worker.
#pragma once

#include "plugin.h"
#include "steps/installation.h"

namespace host {

[[nodiscard]] Found discover(const Plugin& plugin);

}  // namespace host
