// Which broker properties file is validated.
#include <cerrno>
#include <string_view>

#include "commfile.h"
#include "commutils/heap_text.h"
#include "commutils/views.h"
#include "obvalid/obvalid.h"
#include "sit/situtil.h"

namespace {

sit::LineText default_plugins_file(const PHMVER& record) noexcept {
  char path[sit::LineText::kMaxLength + 1];
  GetAdminServerPluginsFile(&record, path);
  return sit::line_text(path);
}

void use_default_location(const PHMVER& record) noexcept {
  sit::LineText location;
  static_cast<void>(sit::compose(location, "The path",
                                 {sit::text_of(record.dir), "/properties/obroker.properties"}));
  sit::use_location(location);
}

// Puts the location that the plugins file gives, or else the default, into obroker.
void read_location(const PHMVER& record, const char* name, sit::BrokerLocation& location) noexcept {
  location.status = ReadPlugins(&record, name);
  const int error = errno;
  if (location.status == OB_LOCATION_FOUND) {
    LogMsg("Read obroker properties location from Plugins file: %s\n", name);
    return;
  }
  location.is_default = true;
  use_default_location(record);
  if (location.status == SIT_PLUGINS_UNREADABLE) {
    LogMsg("ERROR: Could not read file %s, errno = %d\n", name, error);
    location.code = SIT_PLUGINS_UNREADABLE;
  } else if (location.status == OB_NO_LOCATION) {
    LogMsg(
        "WARNING: Read Plugin file %s but did not find obroker properties location. Using the "
        "default.\n\n",
        name);
  }
}

void check_location(sit::BrokerLocation& location) noexcept {
  const unsigned mode = FileExists(obroker);
  const int error = mode == 0 ? errno : EISDIR;
  location.exists = mode != 0;
  if (location.is_default && mode == 0) {
    LogMsg(
        "INFORMATION: This installation does not use the obroker properties file. Skipping "
        "validation.\n");
  } else if (!location.is_default && (mode == 0 || sit::is_directory(mode))) {
    LogMsg("ERROR: Could not find properties file %s errno = %d\n", obroker, error);
    location.code = SIT_NO_BROKER_PROPERTIES;
  }
}

}  // namespace

sit::BrokerLocation sit::locate_broker_properties(PHMVER& record, const char* named) noexcept {
  BrokerLocation location;
  static_cast<void>(
      choose_file(record.pluginsFile, named, [&record] { return default_plugins_file(record); }));
  const char* file = record.pluginsFile;
  if (!is_missing(file) && !is_file(file, "Admin Server plugins file")) {
    location.code = SIT_NO_PLUGINS_FILE;
    return location;
  }
  read_location(record, file, location);
  if (location.code == SIT_OK) check_location(location);
  return location;
}
