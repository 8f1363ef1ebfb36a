#include "obvalid/plugins.h"

#include <optional>
#include <string_view>

#include "commfile.h"
#include "commutils/views.h"
#include "obvalid/admin_server.h"

namespace sit::obvalid {
namespace {

// How a release keeps the plugin of the broker properties: in a section that this text opens and
// an empty line closes.
struct Format {
  std::string_view opening;
  // What a line of the section says about the location; nothing when it says nothing.
  std::optional<std::string_view> (*read)(std::string_view line);
};

constexpr Format kBlocks{"OBPropMgrPlugin",
                         [](std::string_view line) { return std::optional{line}; }};

constexpr Format kSections{"[Plugin.OBPropMgr]",
                           [](std::string_view line) -> std::optional<std::string_view> {
                             constexpr std::string_view kKey = "pluginargs=";
                             if (!contains(line, kKey)) return std::nullopt;
                             return tail(line, kKey.size() + 1);
                           }};

// Takes the last candidate of the section. False when nothing closes the section.
bool read_section(LineReader& file, const Format& format, LineText& candidate) noexcept {
  bool is_inside = false;
  for (Line line; file.next(line);) {
    const std::string_view text = line.text();
    log_verbose("Read ****: %s", line_text(text).c_str());
    if (text.starts_with('#') || (!is_inside && !text.starts_with(format.opening))) continue;
    if (text.starts_with('\n')) return true;
    is_inside = true;
    if (const std::optional<std::string_view> found = format.read(text)) {
      candidate = line_text(head(*found, found->find('\n')));
    }
  }
  return false;
}

// The location is what the section says, as it stands.
Plugins read_as(const Format& format, const char* path) noexcept {
  Plugins plugins;
  if (is_missing(path)) return plugins;
  LineReader file{path};
  plugins.error = file.error();
  if (file.error() != 0) {
    plugins.result = SIT_PLUGINS_UNREADABLE;
    return plugins;
  }
  const bool is_closed = read_section(file, format, plugins.location);
  const bool is_found = is_closed && !plugins.location.empty();
  plugins.result = is_found ? OB_LOCATION_FOUND : OB_NO_LOCATION;
  return plugins;
}

}  // namespace

Plugins read_plugins(const PHMVER& record, const char* path) noexcept {
  constexpr int kBlockRelease = 9;
  constexpr int kSectionRelease = 10;
  if (record.major != kBlockRelease && record.major != kSectionRelease) return {};
  LineText own;
  if (is_missing(path)) {
    own = own_plugins_file(record);
    path = own.c_str();
  }
  return record.major == kBlockRelease ? read_blocks(path) : read_sections(path);
}

Plugins read_blocks(const char* path) noexcept {
  Plugins plugins = read_as(kBlocks, path);
  const std::string_view name = plugins.location.view();
  const bool is_archive = name.starts_with("pelloran.zip") || name.starts_with("pelloran.jar");
  if (plugins.result == OB_LOCATION_FOUND && is_archive) plugins.result = OB_NO_LOCATION;
  return plugins;
}

Plugins read_sections(const char* path) noexcept {
  Plugins plugins = read_as(kSections, path);
  const std::string_view arguments = plugins.location.view();
  plugins.location = line_text(head(arguments, arguments.find(',')));
  return plugins;
}

void publish_location(const LineText& location) noexcept { put_text(obroker, location.view()); }

}  // namespace sit::obvalid
