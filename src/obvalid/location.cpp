#include "obvalid/location.h"

#include <cerrno>

#include "commfile.h"
#include "commutils/views.h"
#include "file_status.h"
#include "obvalid/admin_server.h"
#include "obvalid/plugins.h"
#include "obvalid/properties.h"
#include "situtil/path.h"

namespace sit::obvalid {
namespace {

// Takes the location that the plugins file gives, or else the default.
void read_location(const PHMVER& record, const char* name, BrokerLocation& location) noexcept {
  const Plugins plugins = read_plugins(record, name);
  location.status = plugins.result;
  location.is_default = plugins.result != OB_LOCATION_FOUND;
  location.path = plugins.location;
  if (location.is_default) {
    static_cast<void>(
        compose_path(location.path, {text_of(record.dir), "/properties/obroker.properties"}));
  }
  publish_location(location.path);
  if (plugins.result == OB_LOCATION_FOUND) {
    log("Read obroker properties location from Plugins file: %s\n", name);
  } else if (plugins.result == SIT_PLUGINS_UNREADABLE) {
    log("ERROR: Could not read file %s, errno = %d\n", name, plugins.error);
    location.code = SIT_PLUGINS_UNREADABLE;
  } else if (plugins.result == OB_NO_LOCATION) {
    log("WARNING: Read Plugin file %s but did not find obroker properties location. Using the "
        "default.\n\n",
        name);
  }
}

void check_location(BrokerLocation& location) noexcept {
  const unsigned mode = file_mode(location.path.c_str());
  const int error = mode == 0 ? errno : EISDIR;
  location.exists = mode != 0;
  if (location.is_default && mode == 0) {
    log("INFORMATION: This installation does not use the obroker properties file. Skipping "
        "validation.\n");
  } else if (!location.is_default && (mode == 0 || is_directory(mode))) {
    log("ERROR: Could not find properties file %s errno = %d\n", location.path.c_str(), error);
    location.code = SIT_NO_BROKER_PROPERTIES;
  }
}

}  // namespace

BrokerLocation locate_broker_properties(PHMVER& record, const char* named) noexcept {
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

}  // namespace sit::obvalid
