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

const LineRule kListing{"", "ls: ", "^ls: ", Sign::kError};

const LineRule kNotRun{"", "sh: ",
                       "^(/bin/)?sh: (\\d+: )?.*: (not found|Permission denied|No such file or "
                       "directory)",
                       Sign::kFailed};

// What the plug-in itself says where it also shows files of others: sentences with a path in them,
// as it writes them.
const Rules kPlugin{
    kNoTemporaryFile,
    {"", "ailed to capture output", "^Failed to capture output from ", Sign::kLost},
    {"", "ERROR: ", "^ERROR: .*(errno|ret) = -?\\d+\\.?$", Sign::kError},
    {"", "ERROR: ", "^ERROR: .* of \\d+ characters is longer than \\d+ and is not used",
     Sign::kError},
    {"", "ERROR: ", "^ERROR: (Directory|PHM is set to) ", Sign::kError},
    {"", "Could not ", "^Could not (open|copy|find) .*(/|version)", Sign::kError},
    {"", "Cound not open", "^Cound not open addons file ", Sign::kError},
    {"", "Cannot ", "^Cannot (find|copy) /.*(Skipping|because file does not exist)", Sign::kError},
    {"", "Failed to ", "^Failed to (read|open|log|find|locate) ", Sign::kError},
    {"", "Unable to ", "^Unable to (open|determine object file from|find startup script) ",
     Sign::kWrong},
    {"", "does not exist", "^(Directory |Path )?/.* does not exist(, aborting)?$", Sign::kWrong},
    kListing,
};

// What may begin a line where tools of a product print and nobody else.
Rules of_tools(const char* section) {
  return {{section, "ERROR", "^\\(?ERROR\\b", Sign::kError},
          {section, "Could not ", "^Could not ", Sign::kError},
          {section, "Cannot ", "^Cannot ", Sign::kError},
          {section, "WARNING: ", "^WARNING: ", Sign::kWrong},
          {section, "does not exist", " does not exist(, .*)?$", Sign::kWrong},
          {section, ": cannot ", "^\\S+: cannot ", Sign::kError},
          {section, "cannot open shared object", "cannot open shared object file", Sign::kFailed},
          {section, "sh: ", kNotRun.pattern, Sign::kFailed}};
}

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
                {"", "  ", "^  (\\S.*)$", Sign::kTried}},
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
  // A row of a table that ends with a date and what that means.
  constexpr const char* kLicence = "^\\S.*?\\s{2,}.*\\b(\\d{4}-\\d{2}-\\d{2})\\b";
  static const ReportKind kind{
      .titles = {"Pelloran Product and Licensing Information",
                 "DELVON Product and Licensing Information",
                 "Ambrelis Product and Licensing Information", "Contents of: *"},
      .headings = {},
      .rules =
          Rules{{"Product and Licensing", "-", kLicence, Sign::kEnds, "The licence of {block}"}} +
          kPlugin + of_tools("Product and Licensing"),
      .blocks = {{"Product and Licensing", "^(\\S.*?)\\s{2,}"}},
      .fails_with_command = true};
  return kind;
}

const ReportKind& files_report() {
  static const ReportKind kind{
      .titles = {}, .headings = {}, .rules = kPlugin, .blocks = {}, .fails_with_command = true};
  return kind;
}

const ReportKind& security_report() {
  static const ReportKind kind{
      .titles = {"Certificates", "Keys"},
      .headings = {},
      .rules = Rules{{"Certificates", "A", "(?i)^\\s*not ?after\\s*:?\\s+(\\S.*)$", Sign::kEnds,
                      "The certificate {block}"},
                     {"Certificates", "cert", "(?i)^\\s+not a readable certificate", Sign::kWrong,
                      "The certificate {block} cannot be read"},
                     {"Certificates", "load cert", "(?i)unable to load certificate", Sign::kWrong,
                      "The certificate {block} cannot be read"},
                     {"Certificates", "read cert", "(?i)^could not read certificate", Sign::kWrong,
                      "The certificate {block} cannot be read"},
                     {"Keys", "parse", "does not parse", Sign::kWrong,
                      "The key {block} cannot be read"}} +
               kPlugin + of_tools("Certificates") + of_tools("Keys"),
      .blocks = {{"Certificates", "^(?:Listing of )?(\\S+\\.0)$",
                  "(?i)^\\s*subject\\b\\s*[:=]?\\s.*\\b(CN ?= ?[^,/]+)"},
                 {"Keys", "^(\\S+)$"}},
      .fails_with_command = true};
  return kind;
}

const ReportKind& validation_report() {
  static const ReportKind kind{
      .titles = {"Validation of Ostrel Broker properties file", "PARAMETER FILES",
                 "Validation of Connection Manager properties file"},
      .headings = {},
      .rules = kPlugin + of_tools("Validation of"),
      .blocks = {},
      .has_all_titles = true,
      .fails_with_command = true};
  return kind;
}

const ReportKind& messages_report() {
  static const ReportKind kind{
      .titles = {},
      .headings = {},
      .rules = Rules{{"", "Can't find ", "^Can't find ", Sign::kWrong}} + of_tools("") + kPlugin,
      .blocks = {},
      .has_end_mark = false,
      .fails_with_command = true};
  return kind;
}

const ReportKind& netscape_report() {
  static const ReportKind kind{.titles = {"Netscape/iPlanet Configuration", "Configuration Files",
                                          "CGI directories", "Startup Script"},
                               .headings = {"Netscape/iPlanet Configuration"},
                               .rules = kPlugin,
                               .blocks = {},
                               .fails_with_command = true};
  return kind;
}

const ReportKind& apache_report() {
  static const ReportKind kind{
      .titles = {"Apache Configuration", "Apache ScriptAlias Directory Listings"},
      .headings = {},
      .rules = kPlugin,
      .blocks = {},
      .has_all_titles = true,
      .fails_with_command = true};
  return kind;
}

const ReportKind& library_report() {
  static const ReportKind kind{
      .titles = {},
      .headings = {},
      .rules = Rules{{"", "DLL failed", "^DLL failed: ", Sign::kFailed}} + kPlugin,
      .blocks = {},
      .has_end_mark = false};
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
