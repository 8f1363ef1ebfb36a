// Reading the plugins file of the admin server.
#pragma once

#include "sit/obvalid.h"
#include "situtil/lines.h"

namespace sit::obvalid {

// What reading a plugins file gave: a result of ReadPlugins and the location of the broker
// properties file, if that was found.
struct Plugins {
  int result = 0;
  int error = 0;  // why the file could not be opened
  LineText location;
};

// As ReadPlugins, ReadPluginsV9 and ReadPluginsV10.
[[nodiscard]] Plugins read_plugins(const PHMVER& record, const char* path) noexcept;
[[nodiscard]] Plugins read_blocks(const char* path) noexcept;
[[nodiscard]] Plugins read_sections(const char* path) noexcept;

// Makes it the content of obroker, which is written nowhere else.
void publish_location(const LineText& location) noexcept;

}  // namespace sit::obvalid
