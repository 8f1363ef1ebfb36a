// Discovering installations and reading their versions.
#pragma once

#include <cstdio>
#include <initializer_list>
#include <string_view>

#include "commutils/heap_text.h"
#include "sit/pelver.h"
#include "situtil/lines.h"

namespace sit::pelver {

// Discovers the installations into pphm. Returns the messages of that; null when memory runs out.
[[nodiscard]] HeapText discover() noexcept;

// As the exported functions; their messages go to `output`.
void find_pelloran(PHMVER*& list, FILE* output) noexcept;
void find_delvon(PHMVER*& list, FILE* output) noexcept;
void read_version(PHMVER& record, FILE* output) noexcept;
void read_version_file(PHMVER& record, FILE* output) noexcept;
[[nodiscard]] bool read_version_library(PHMVER& record, const char* path, FILE* output) noexcept;

// Reads the installation directory out of the monitoring product's init file. Returns as
// GetDelvonTarg does.
[[nodiscard]] int read_install_directory(const char* init_file, LineText& directory) noexcept;

// What a version text of an installation's messages calls the product.
[[nodiscard]] std::string_view product_name(const PHMVER& record) noexcept;

// Writes the pieces in a row.
void print(FILE* output, std::initializer_list<std::string_view> pieces) noexcept;

}  // namespace sit::pelver
