// Reading the plugins file of the admin server.
#include <cerrno>
#include <optional>
#include <string_view>

#include "commfile.h"
#include "commutils/views.h"
#include "obvalid/obvalid.h"
#include "sit/commutils.h"
#include "situtil/lines.h"

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
                             if (line.find(kKey) == std::string_view::npos) return std::nullopt;
                             return sit::tail(line, kKey.size() + 1);
                           }};

// Takes the last candidate of the section. False when nothing closes the section.
bool read_section(sit::LineReader& file, const Format& format, sit::LineText& candidate) noexcept {
  bool is_inside = false;
  for (sit::Line line; file.next(line);) {
    const std::string_view text = line.text();
    LogMsgV("Read ****: %s", sit::line_text(text).c_str());
    if (text.starts_with('#') || (!is_inside && !text.starts_with(format.opening))) continue;
    if (text.starts_with('\n')) return true;
    is_inside = true;
    if (const std::optional<std::string_view> found = format.read(text)) {
      candidate = sit::line_text(sit::head(*found, found->find('\n')));
    }
  }
  return false;
}

int read_candidate(const char* path, const Format& format, sit::LineText& candidate) noexcept {
  if (sit::is_missing(path)) return 0;
  sit::LineReader file{path};
  if (file.error() != 0) {
    errno = file.error();
    return SIT_PLUGINS_UNREADABLE;
  }
  const bool is_closed = read_section(file, format, candidate);
  return is_closed && !candidate.empty() ? OB_LOCATION_FOUND : OB_NO_LOCATION;
}

}  // namespace

void sit::use_location(const LineText& location) noexcept { stcopy(obroker, location.c_str()); }

extern "C" {

constinit char obroker[sit::LineText::kMaxLength + 1] = "";

int ReadPlugins(const PHMVER* record, const char* path) noexcept {
  constexpr int kBlockRelease = 9;
  constexpr int kSectionRelease = 10;
  if (record == nullptr || (record->major != kBlockRelease && record->major != kSectionRelease)) {
    return 0;
  }
  sit::LineText own;
  if (sit::is_missing(path)) {
    if (!sit::own_plugins_file(*record, own)) return 0;
    path = own.c_str();
  }
  return record->major == kBlockRelease ? ReadPluginsV9(path) : ReadPluginsV10(path);
}

int ReadPluginsV9(const char* path) noexcept {
  sit::LineText location;
  const int result = read_candidate(path, kBlocks, location);
  if (result != OB_LOCATION_FOUND) return result;
  const std::string_view name = location.view();
  if (name.starts_with("pelloran.zip") || name.starts_with("pelloran.jar")) return OB_NO_LOCATION;
  sit::use_location(location);
  return OB_LOCATION_FOUND;
}

int ReadPluginsV10(const char* path) noexcept {
  sit::LineText arguments;
  const int result = read_candidate(path, kSections, arguments);
  if (result != OB_LOCATION_FOUND) return result;
  const std::string_view list = arguments.view();
  sit::use_location(sit::line_text(sit::head(list, list.find(','))));
  return OB_LOCATION_FOUND;
}

}  // extern "C"
