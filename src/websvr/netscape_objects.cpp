// The object file of a Netscape/iPlanet server instance, and the CGI directories that it maps.
#include "commfile.h"
#include "commutils/views.h"
#include "situtil/lines.h"
#include "websvr/sections.h"
#include "websvr/values.h"
#include "websvr/websvr.h"

namespace sit::websvr {
namespace {

constexpr ScriptWords kCgiWords{
    .heading = "\n\nDirectory listing of %s (alias %s)\n",
    .missing = "Path %s does not exist\n",
    .none = "\n\nNo CGI directories found in %s\n\n",
};

// The object file that magnus.conf loads, valid until the reader reads on; empty when it loads
// none.
std::string_view loaded_objects(LineReader& reader) noexcept {
  constexpr std::string_view kKeyword = "LoadObjects ";
  for (Line line; reader.next(line);) {
    if (!line.text().starts_with(kKeyword)) continue;
    return read_value(tail(line.text(), kKeyword.size())).text;
  }
  return {};
}

Path assumed_object_file(std::string_view instance) noexcept {
  log_verbose("Assuming obj.conf is config/obj.conf\n");
  Path object_file;
  if (compose_path(object_file, {instance, "/config/obj.conf"})) {
    log_verbose("Assuming obj.conf is %s\n", object_file.c_str());
  }
  return object_file;
}

Path named_object_file(std::string_view name, std::string_view instance) noexcept {
  log_verbose("Found LoadObjects\n");
  Path directory;
  Path object_file;
  if (compose_path(directory, {instance, "/config"}) &&
      make_absolute(object_file, name, directory.view())) {
    log_verbose("obj.conf is %s\n", object_file.c_str());
  }
  return object_file;
}

// The value behind `key`; empty when the line does not have it.
std::string_view value_of(std::string_view line, std::string_view key) noexcept {
  const std::size_t found = line.find(key);
  if (found == std::string_view::npos) return {};
  return read_value(tail(line, found + key.size())).text;
}

bool maps_cgi(std::string_view line) noexcept {
  return line.starts_with("NameTrans ") && contains(line, "name=\"cgi\"") && contains(line, "dir=");
}

}  // namespace

int find_object_file(const char* magnus_conf, std::string_view instance,
                     Path& object_file) noexcept {
  LineReader reader{magnus_conf};
  if (reader.error() != 0) {
    log("Error opening %s for reading, errno = %d\n", magnus_conf, reader.error());
    return reader.error();
  }
  const std::string_view name = loaded_objects(reader);
  object_file = name.empty() ? assumed_object_file(instance) : named_object_file(name, instance);
  return SIT_OK;
}

int list_cgi_directories(const char* object_file) noexcept {
  LineReader reader{object_file};
  if (reader.error() != 0) {
    log("Unable to open %s for reading, errno=%d\n", object_file, reader.error());
    return reader.error();
  }
  ScriptDirectories directories{kCgiWords};
  for (Line line; reader.next(line);) {
    if (!maps_cgi(line.text())) continue;
    directories.list(value_of(line.text(), "dir="), value_of(line.text(), "from="));
  }
  directories.finish(object_file);
  return SIT_OK;
}

}  // namespace sit::websvr
