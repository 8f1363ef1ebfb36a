#include "work/discovery.h"

#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "catalogue.h"
#include "sit/pelver.h"
#include "sit/sitexec.h"

namespace host {
namespace {

std::string text_of(const char* text) { return text == nullptr ? "" : text; }

// What a variable names, or an option in its place, and is not there.
void note_missing(Found& found, const char* variable, const char* what, mode_t kind) {
  struct stat status {};
  const char* named = std::getenv(variable);
  if (named == nullptr || (::stat(named, &status) == 0 && (status.st_mode & S_IFMT) == kind))
    return;
  found.missing.push_back(*named == '\0' ? std::string(variable) + " is set and empty"
                                         : std::string(what) + " " + named + " is not there");
}

}  // namespace

Found discover(const Plugin& plugin) {
  Found found;
  const std::vector<std::string> all{std::to_string(SEL_ANY)};
  static_cast<void>(find_entry("GetPelVersList").call(plugin, all));
  auto* strip_patch = plugin.function<decltype(::RmPatchInfoPHM)>("RmPatchInfoPHM");
  for (const PHMVER* record = plugin.variable<PHMVER*>("pphm"); record != nullptr;
       record = record->next) {
    std::string release = text_of(record->version);
    strip_patch(release.data());
    release.resize(std::strlen(release.c_str()));
    const bool is_monitor = (record->flags & PK_MONITOR_MASK) != 0;
    found.installations.push_back(
        {.key = release + (is_monitor ? ":" + text_of(record->pelVersion) : ""),
         .version = text_of(record->version),
         .directory = text_of(record->dir),
         .major = record->major,
         .is_monitor = is_monitor});
  }
  note_missing(found, "PHM", "the installation", S_IFDIR);
  note_missing(found, "DELVONINIT", "the init file", S_IFREG);
  return found;
}

}  // namespace host
