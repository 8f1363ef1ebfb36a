// The Java runtimes: their own version output is the finding.
#pragma once

#include "sit/pelver.h"

namespace sit::javaver {

// As getJavaInfo and getJavaInfoSystem.
void write_versions_for(const PHMVER& record) noexcept;
void write_versions_of_machine() noexcept;

}  // namespace sit::javaver
