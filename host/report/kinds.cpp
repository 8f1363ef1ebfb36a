#include "report/kinds.h"

namespace host {
namespace {

using Rules = std::vector<LineRule>;

Rules operator+(Rules left, const Rules& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

const LineRule kNoTemporaryFile{"", "ailed to create temp file",
                                "^(\\w+: F|LogCmdOutput: f)ailed to create temp file", Sign::kLost,
                                "no temporary file could be made"};

const Rules kListing{kNoTemporaryFile,
                     {"", "ERROR: ", "^ERROR: ", Sign::kError},
                     {"", "ls: ", "^ls: ", Sign::kError}};

// What the plug-in and the shell say in a report about an installation or a server.
const Rules kCommon{
    kNoTemporaryFile,
    {"", "ailed to capture output", "^Failed to capture output from ", Sign::kLost},
    {"", "ERROR", "^(ERROR: |\\(ERROR\\))", Sign::kError},
    {"", "Could not ", "^Could not ", Sign::kError},
    {"", "Cannot ", "^Cannot ", Sign::kError},
    {"", "Cound not open", "^Cound not open", Sign::kError},
    {"", "Failed to ", "^Failed to ", Sign::kError},
    {"",
     "sh: ", "^(/bin/)?sh: (\\d+: )?.*: (not found|Permission denied|No such file or directory)",
     Sign::kFailed},
    {"", "ls: ", "^ls: ", Sign::kError},
    {"", "WARNING: ", "^WARNING: ", Sign::kWrong},
    {"", "Unable to ", "^Unable to ", Sign::kWrong},
    {"", "Can't find ", "^Can't find ", Sign::kWrong},
    {"", "does not exist", " does not exist(, .*)?$", Sign::kWrong},
};

const LineRule kDeniedLine{"", "ermission denied", "[Pp]ermission denied", Sign::kDenied};

}  // namespace

const ReportKind& versions_report() {
  static const ReportKind kind{
      .titles = {"OS Version", "Pelloran Versions", "Java Versions"},
      .headings = {},
      .rules = {kNoTemporaryFile,
                {"OS Version", "Could not", "^Could not get OS Version", Sign::kFailed},
                {"Pelloran Versions", "Unable to ", "^Unable to ", Sign::kWrong},
                {"Pelloran Versions", "Failed ", "^Failed ", Sign::kWrong},
                {"Pelloran Versions", "Found DELVONINIT", "^Found DELVONINIT, ", Sign::kWrong},
                {"Java Versions", "java: not found", "^(/bin/)?sh: (\\d+: )?java: not found",
                 Sign::kNotHere},
                {"Java Versions", "sh: ", "^(/bin/)?sh: (\\d+: )?.*: (not found|Permission denied)",
                 Sign::kFailed},
                {"Java Versions", "does not exist", " does not exist(, .*)?$", Sign::kWrong}},
      .blocks = {}};
  return kind;
}

const ReportKind& system_report() {
  static const ReportKind kind{
      .titles = {"System Information", "Machine Information", "Linux Distribution",
                 "Ulimit Information", "Swap Information", "Mount Information",
                 "Disk Free Information", "System Table Information", "Kernel Settings",
                 "Semaphore Information", "Shared Memory Information", "Process Listing",
                 "TCP/IP and UDP Network Status", "Installed Product Information",
                 "Patch Information"},
      .headings = {"System Information"},
      .rules = {kNoTemporaryFile,
                {"", "Command: ", "^Command: ", Sign::kOutput},
                {"", "Unable to extract", "^Unable to extract information\\.$", Sign::kNotTried},
                {"", "  ", "^  (\\S.*)$", Sign::kTried},
                kDeniedLine},
      .blocks = {},
      .has_all_titles = true};
  return kind;
}

const ReportKind& environment_report() {
  static const ReportKind kind{
      .titles = {"List of environment variables"}, .headings = {}, .rules = {}, .blocks = {}};
  return kind;
}

const ReportKind& configuration_report() {
  static const ReportKind kind{
      .titles = {"Pelloran Product and Licensing Information",
                 "DELVON Product and Licensing Information",
                 "Ambrelis Product and Licensing Information", "Contents of: *"},
      .headings = {},
      .rules =
          kCommon + Rules{{"Product and Licensing", "-", "^(?:\\S.*\\s)?(\\d{4}-\\d{2}-\\d{2})\\b",
                           Sign::kEnds, "The licence of {block}"}},
      .blocks = {{"Product and Licensing", "^(\\S.*?)\\s{2,}"}}};
  return kind;
}

const ReportKind& files_report() {
  static const ReportKind kind{.titles = {}, .headings = {}, .rules = kListing, .blocks = {}};
  return kind;
}

const ReportKind& security_report() {
  static const ReportKind kind{
      .titles = {"Certificates", "Keys"},
      .headings = {},
      .rules = kCommon + Rules{{"Certificates", "A", "(?i)^\\s*not ?after\\s*:?\\s+(\\S.*)$",
                                Sign::kEnds, "The certificate {block}"},
                               {"Certificates", "cert", "(?i)^\\s+not a readable certificate",
                                Sign::kWrong, "The certificate {block} cannot be read"},
                               {"Certificates", "load cert", "(?i)unable to load certificate",
                                Sign::kWrong, "The certificate {block} cannot be read"},
                               {"Certificates", "read cert", "(?i)^could not read certificate",
                                Sign::kWrong, "The certificate {block} cannot be read"},
                               {"Keys", "parse", "does not parse", Sign::kWrong,
                                "The key {block} cannot be read"}},
      .blocks = {{"Certificates", "^(?:Listing of )?(\\S+\\.0)$",
                  "(?i)^\\s*subject\\b\\s*[:=]?\\s.*\\b(CN ?= ?[^,/]+)"},
                 {"Keys", "^(\\S+)$"}}};
  return kind;
}

const ReportKind& validation_report() {
  static const ReportKind kind{
      .titles = {"Validation of Ostrel Broker properties file", "PARAMETER FILES",
                 "Validation of Connection Manager properties file"},
      .headings = {},
      .rules = kCommon,
      .blocks = {}};
  return kind;
}

const ReportKind& messages_report() {
  static const ReportKind kind{
      .titles = {}, .headings = {}, .rules = kCommon, .blocks = {}, .has_end_mark = false};
  return kind;
}

const ReportKind& netscape_report() {
  static const ReportKind kind{.titles = {"Netscape/iPlanet Configuration", "Configuration Files",
                                          "CGI directories", "Startup Script"},
                               .headings = {"Netscape/iPlanet Configuration"},
                               .rules = kCommon,
                               .blocks = {}};
  return kind;
}

const ReportKind& apache_report() {
  static const ReportKind kind{
      .titles = {"Apache Configuration", "Apache ScriptAlias Directory Listings"},
      .headings = {},
      .rules = kCommon,
      .blocks = {}};
  return kind;
}

const ReportKind& output_report() {
  static const ReportKind kind{.titles = {},
                               .headings = {},
                               .rules = {},
                               .blocks = {},
                               .has_end_mark = true,
                               .is_output = true};
  return kind;
}

}  // namespace host
