// Certificate and key stores: the installation's own tools list them.
#pragma once

#include "sit/pelver.h"

namespace sit::pelsec {

enum class StoreFormat { kNone, kBefore100B, kFrom100B };

// How the installation's release keeps its stores.
[[nodiscard]] StoreFormat store_format(const PHMVER& record) noexcept;

// Writes the sections of the stores.
void write_stores(const PHMVER& record, StoreFormat format) noexcept;

// As getDirCertInfo.
void list_certificates(const char* tool, const char* store) noexcept;

}  // namespace sit::pelsec
