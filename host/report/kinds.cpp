#include "report/kinds.h"

namespace host {

const ReportKind& versions_report() {
  static const ReportKind kind{.name = "versions",
                               .titles = {"OS Version", "Pelloran Versions", "Java Versions"}};
  return kind;
}

const ReportKind& system_report() {
  static const ReportKind kind{
      .name = "system",
      .titles = {"System Information", "Machine Information", "Linux Distribution",
                 "Ulimit Information", "Swap Information", "Mount Information",
                 "Disk Free Information", "System Table Information", "Kernel Settings",
                 "Semaphore Information", "Shared Memory Information", "Process Listing",
                 "TCP/IP and UDP Network Status", "Installed Product Information",
                 "Patch Information"},
      .headings = {"System Information"},
      .layout = {{"^Command: ", Sign::kOutput},
                 {"^Unable to extract information\\.$", Sign::kNotTried},
                 {"^  (\\S.*)$", Sign::kTried}},
      .has_all_titles = true};
  return kind;
}

const ReportKind& environment_report() {
  static const ReportKind kind{
      .name = "environment",
      .titles = {"List of environment variables"},
  };
  return kind;
}

const ReportKind& configuration_report() {
  static const ReportKind kind{
      .name = "configuration",
      .titles = {"Pelloran Product and Licensing Information",
                 "DELVON Product and Licensing Information",
                 "Ambrelis Product and Licensing Information", "Contents of: *"},
      .blocks = {{"Product and Licensing", "^(\\S.*?)\\s{2,}"}},
      .fails_with_command = true};
  return kind;
}

const ReportKind& files_report() {
  static const ReportKind kind{.name = "files", .fails_with_command = true};
  return kind;
}

const ReportKind& security_report() {
  static const ReportKind kind{.name = "security",
                               .titles = {"Certificates", "Keys"},
                               .blocks = {{"Certificates", "^(?:Listing of )?(\\S+\\.0)$",
                                           "(?i)^\\s*subject\\b\\s*[:=]?\\s.*\\b(CN ?= ?[^,/]+)"},
                                          {"Keys", "^(\\S+)$"}},
                               .fails_with_command = true};
  return kind;
}

const ReportKind& validation_report() {
  static const ReportKind kind{
      .name = "validation",
      .titles = {"Validation of Ostrel Broker properties file", "PARAMETER FILES",
                 "Validation of Connection Manager properties file"},
      .has_all_titles = true,
      .fails_with_command = true};
  return kind;
}

const ReportKind& messages_report() {
  static const ReportKind kind{
      .name = "messages", .has_end_mark = false, .fails_with_command = true};
  return kind;
}

const ReportKind& netscape_report() {
  static const ReportKind kind{.name = "netscape",
                               .titles = {"Netscape/iPlanet Configuration", "Configuration Files",
                                          "CGI directories", "Startup Script"},
                               .headings = {"Netscape/iPlanet Configuration"},
                               .fails_with_command = true};
  return kind;
}

const ReportKind& apache_report() {
  static const ReportKind kind{
      .name = "apache",
      .titles = {"Apache Configuration", "Apache ScriptAlias Directory Listings"},
      .has_all_titles = true,
      .fails_with_command = true};
  return kind;
}

const ReportKind& library_report() {
  static const ReportKind kind{.name = "library", .has_end_mark = false};
  return kind;
}

const ReportKind& output_report() {
  static const ReportKind kind{.name = "output", .has_end_mark = true, .is_output = true};
  return kind;
}

const std::vector<const ReportKind*>& report_kinds() {
  static const std::vector<const ReportKind*> kinds{
      &versions_report(), &system_report(),   &environment_report(), &configuration_report(),
      &files_report(),    &security_report(), &validation_report(),  &messages_report(),
      &netscape_report(), &apache_report(),   &library_report(),     &output_report()};
  return kinds;
}

}  // namespace host
