// The commands that write a report, as every test that goes through all of them calls them: in a
// folder with the sample installation in "sample" and the folders below.
#pragma once

#include "sit/sit.h"

namespace test {

inline constexpr const char* kReport = "disk/reports/r";
inline constexpr const char* kCopies = "disk/copies";
inline constexpr const char* kTemporary = "disk/tmp";

// How a report is opened: as the mode says, as the mode says or else at its end, always anew, or
// always at its end. The last kind neither ends the report nor tells of its closing.
enum class Opens { kByMode, kByModeOrAtEnd, kAnew, kAtEnd };

struct Command {
  const char* name;
  Opens opens;
  int (*run)(const char* report, int mode);
};

inline constexpr Command kCommands[] = {
    {"GetSysInfo", Opens::kByModeOrAtEnd,
     [](const char* r, int mode) { return GetSysInfo(r, 0, mode, 1); }},
    {"GetVersInfo", Opens::kByModeOrAtEnd,
     [](const char* r, int mode) { return GetVersInfo(r, mode, 1, 1); }},
    {"GetEnvironInfo", Opens::kByModeOrAtEnd,
     [](const char* r, int mode) { return GetEnvironInfo(r, mode, 1); }},
    {"GetPelCFGInfo", Opens::kByMode,
     [](const char* r, int mode) { return GetPelCFGInfo(r, "10.1B", mode, 1, SEL_ANY); }},
    {"GetPelInstFiles", Opens::kByMode,
     [](const char* r, int mode) { return GetPelInstFiles(r, "10.1B", mode, 0, SEL_ANY); }},
    {"GetPelSecurityLog", Opens::kByMode,
     [](const char* r, int mode) { return GetPelSecurityLog(r, "10.1B", mode, 0, SEL_ANY); }},
    {"GetOBValidationInfo", Opens::kByMode,
     [](const char* r, int mode) {
       return GetOBValidationInfo(kCopies, r, "10.1B", mode, 0, "", "");
     }},
    {"GetNetscapeInfo", Opens::kAnew,
     [](const char* r, int /*mode*/) { return GetNetscapeInfo(r, "sample/netscape", "shop"); }},
    {"GetApacheInfo", Opens::kAnew,
     [](const char* r, int /*mode*/) { return GetApacheInfo(r, "sample/apache"); }},
    {"OBCopyFiles", Opens::kAtEnd,  // of what GetOBValidationInfo has found
     [](const char* r, int /*mode*/) { return OBCopyFiles(r, "orders", "10.1B03", kCopies); }},
    {"RunCommand", Opens::kAtEnd,
     [](const char* r, int /*mode*/) {
       return RunCommand("echo x", "", 0, kCopies, ".", "out", r);
     }},
    {"GetDelvonFiles", Opens::kAtEnd, [](const char* r, int /*mode*/) {
       char folder[SIT_PATH_BYTES] = "disk/copies";
       return GetDelvonFiles(r, folder, "2.1A:10.1B03");
     }}};

}  // namespace test
