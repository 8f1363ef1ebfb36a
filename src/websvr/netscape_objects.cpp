// The object file of a Netscape/iPlanet server instance, and the CGI directories that it maps.
#include <cerrno>

#include "commfile.h"
#include "commutils/views.h"
#include "sit/commutils.h"
#include "websvr/websvr.h"

namespace {

constexpr sit::ScriptWords kCgiWords{
    .heading = "\n\nDirectory listing of %s (alias %s)\n",
    .missing = "Path %s does not exist\n",
    .none = "\n\nNo CGI directories found in %s\n\n",
};

// The object file that magnus.conf loads, valid until the reader reads on; empty when it loads
// none.
std::string_view loaded_objects(sit::LineReader& reader) noexcept {
  constexpr std::string_view kKeyword = "LoadObjects ";
  for (sit::Line line; reader.next(line);) {
    if (!line.text().starts_with(kKeyword)) continue;
    return sit::read_value(sit::tail(line.text(), kKeyword.size())).text;
  }
  return {};
}

sit::Path assumed_object_file(std::string_view instance) noexcept {
  LogMsgV("Assuming obj.conf is config/obj.conf\n");
  sit::Path object_file;
  if (sit::compose(object_file, "The path", {instance, "/config/obj.conf"})) {
    LogMsgV("Assuming obj.conf is %s\n", object_file.c_str());
  }
  return object_file;
}

sit::Path named_object_file(std::string_view name, std::string_view instance) noexcept {
  LogMsgV("Found LoadObjects\n");
  sit::Path directory;
  sit::Path object_file;
  if (sit::compose(directory, "The path", {instance, "/config"}) &&
      sit::make_absolute(object_file, name, directory.view())) {
    LogMsgV("obj.conf is %s\n", object_file.c_str());
  }
  return object_file;
}

// The value behind `key`; empty when the line does not have it.
std::string_view value_of(std::string_view line, std::string_view key) noexcept {
  const std::size_t found = line.find(key);
  if (found == std::string_view::npos) return {};
  return sit::read_value(sit::tail(line, found + key.size())).text;
}

bool maps_cgi(std::string_view line) noexcept {
  const auto has = [line](std::string_view text) {
    return line.find(text) != std::string_view::npos;
  };
  return line.starts_with("NameTrans ") && has("name=\"cgi\"") && has("dir=");
}

}  // namespace

extern "C" {

int GetNetscapeObjConf(const char* magnus_conf, const char* instance, char* output) noexcept {
  if (output == nullptr) return EINVAL;
  output[0] = '\0';
  sit::LineReader reader{magnus_conf};
  if (reader.error() != 0) {
    LogMsg("Error opening %s for reading, errno = %d\n", magnus_conf, reader.error());
    return reader.error();
  }
  const std::string_view directory = sit::text_of(instance);
  const std::string_view name = loaded_objects(reader);
  const sit::Path object_file =
      name.empty() ? assumed_object_file(directory) : named_object_file(name, directory);
  stcopy(output, object_file.c_str());
  return SIT_OK;
}

int LogNetscapeCGIDirs(const char* object_file) noexcept {
  sit::LineReader reader{object_file};
  if (reader.error() != 0) {
    LogMsg("Unable to open %s for reading, errno=%d\n", object_file, reader.error());
    return reader.error();
  }
  sit::ScriptDirectories directories{kCgiWords};
  for (sit::Line line; reader.next(line);) {
    if (!maps_cgi(line.text())) continue;
    directories.list(value_of(line.text(), "dir="), value_of(line.text(), "from="));
  }
  directories.finish(object_file);
  return SIT_OK;
}

}  // extern "C"
