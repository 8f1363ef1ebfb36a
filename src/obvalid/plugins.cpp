// Reading the plugins file of the admin server.
#include <optional>
#include <string_view>

#include "commfile.h"
#include "commutils/views.h"
#include "files.h"
#include "handles.h"
#include "obvalid/obvalid.h"
#include "situtil/piece_reader.h"

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

struct Candidate {
  sit::LineText text;
  bool may_be_cut = false;
};

// Takes the last candidate of the section. False when nothing closes the section.
bool read_section(int file, const Format& format, Candidate& candidate) noexcept {
  bool is_inside = false;
  sit::PieceReader reader{file};
  for (sit::Piece piece; reader.next(piece);) {
    const sit::LineText line = sit::line_text(sit::up_to_nul(piece.text));
    LogMsgV("Read ****: %s", line.c_str());
    const std::string_view text = line.view();
    if (text.starts_with('#') || (!is_inside && !text.starts_with(format.opening))) continue;
    if (text.starts_with('\n')) return true;
    is_inside = true;
    if (const std::optional<std::string_view> found = format.read(text)) {
      candidate = {sit::line_text(sit::head(*found, found->find('\n'))), piece.goes_on};
    }
  }
  return false;
}

int read_candidate(const char* path, const Format& format, Candidate& candidate) noexcept {
  if (sit::is_missing(path)) return 0;
  const sit::UniqueFd file = sit::open_for_reading(path);
  if (!file.is_open()) return SIT_PLUGINS_UNREADABLE;
  const bool is_closed = read_section(file.get(), format, candidate);
  return is_closed && !candidate.text.empty() ? OB_LOCATION_FOUND : OB_NO_LOCATION;
}

int use_location(const char* path, std::string_view location, bool may_be_cut) noexcept {
  if (may_be_cut) sit::log_cut_value(path);
  return !may_be_cut && sit::store_location(location) ? OB_LOCATION_FOUND : OB_NO_LOCATION;
}

}  // namespace

bool sit::store_location(std::string_view location) noexcept {
  return store({obroker, LineText::kMaxLength + 1}, location);
}

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
  Candidate candidate;
  const int result = read_candidate(path, kBlocks, candidate);
  if (result != OB_LOCATION_FOUND) return result;
  const std::string_view location = candidate.text.view();
  const bool is_code = location.starts_with("pelloran.zip") || location.starts_with("pelloran.jar");
  return is_code ? OB_NO_LOCATION : use_location(path, location, candidate.may_be_cut);
}

int ReadPluginsV10(const char* path) noexcept {
  Candidate candidate;
  const int result = read_candidate(path, kSections, candidate);
  if (result != OB_LOCATION_FOUND) return result;
  const std::string_view arguments = candidate.text.view();
  const std::size_t comma = arguments.find(',');
  return use_location(path, sit::head(arguments, comma),
                      comma == std::string_view::npos && candidate.may_be_cut);
}

}  // extern "C"
