#include "catalogue.h"

#include <cerrno>

#include "signature.h"
#include "sit/sitexec.h"
#include "sit/websvr.h"

namespace host {
namespace {

using Names = std::vector<std::string>;

std::vector<Entry> make_catalogue() {
  const Names report{"report path", "mode", "final"};
  const Names installation{"report path", "version key", "mode", "ignored", "product selector"};
  return {
      with_signature<decltype(::SIT_Initiate)>(
          {.name = "SIT_Initiate", .writes = "nothing; makes the session"}),
      with_signature<decltype(::GetAPIVersion)>(
          {.name = "GetAPIVersion", .writes = "nothing; gives the plug-in's version"}),
      with_signature<decltype(::SetVerboseMode)>({.name = "SetVerboseMode",
                                                  .argument_names = {"on"},
                                                  .writes = "nothing; switches verbose messages"}),
      with_signature<decltype(::SetPelloranIndependent)>(
          {.name = "SetPelloranIndependent",
           .argument_names = {"on"},
           .writes = "nothing; switches working without an installation"}),
      with_signature<decltype(::GetOSVersion)>(
          {.name = "GetOSVersion", .writes = "nothing; gives the operating-system version"}),
      with_signature<decltype(::PutRecentError)>({.name = "PutRecentError",
                                                  .argument_names = {"text"},
                                                  .writes = "nothing; records an error line"}),
      with_signature<decltype(::RetrieveErrors)>(
          {.name = "RetrieveErrors",
           .writes = "nothing; takes the recorded error lines",
           .meanings = {{0, "delivered"}}}),
      with_signature<decltype(::Initialize_pphm)>(
          {.name = "Initialize_pphm",
           .writes = "nothing; discovers the installations and gives the messages of that"}),

      with_signature<decltype(::GetPelVersList), Owner::kCaller>(
          {.name = "GetPelVersList",
           .argument_names = {"product selector"},
           .writes = "nothing; lists the version keys of the installations"}),
      with_signature<decltype(::FoundPelInst)>(
          {.name = "FoundPelInst",
           .writes = "nothing; looks for the installation that PHM names",
           .meanings = {{0, "installation found"},
                        {1, "PHM is not set"},
                        {2, "its version file is missing"}},
           .number_is_an_answer = true}),
      with_signature<decltype(::FoundWebClient)>(
          {.name = "FoundWebClient",
           .writes = "nothing; looks for a web client among the installations found",
           .meanings = {{0, "no web client in the list"}, {1, "web client in the list"}},
           .number_is_an_answer = true}),

      with_signature<decltype(::GetEnvironInfo)>({.name = "GetEnvironInfo",
                                                  .argument_names = report,
                                                  .writes = "\"List of environment variables\""}),
      with_signature<decltype(::GetVersInfo)>(
          {.name = "GetVersInfo",
           .argument_names = {"report path", "mode", "final", "extra"},
           .writes = "\"OS Version\", \"Pelloran Versions\", \"Java Versions\""}),
      with_signature<decltype(::GetSysInfo)>(
          {.name = "GetSysInfo",
           .argument_names = {"report path", "section", "mode", "final"},
           .writes =
               "\"System Information\": machine, limits, disks, processes, network, packages"}),
      with_signature<decltype(::GetPelVers)>(
          {.name = "GetPelVers", .argument_names = report, .writes = "\"Pelloran Versions\""}),
      with_signature<decltype(::GetJavaVers)>(
          {.name = "GetJavaVers", .argument_names = report, .writes = "\"Java Versions\""}),
      with_signature<decltype(::GetPelCFGInfo)>(
          {.name = "GetPelCFGInfo",
           .argument_names = {"report path", "version key", "mode", "final", "product selector"},
           .writes = "the configuration, installer's record and add-ons of one installation"}),
      with_signature<decltype(::GetPelInstFiles)>({.name = "GetPelInstFiles",
                                                   .argument_names = installation,
                                                   .writes = "the files of an installation"}),
      with_signature<decltype(::GetPelSecurityLog)>(
          {.name = "GetPelSecurityLog",
           .argument_names = installation,
           .writes = "\"Certificates\" and \"Keys\" of an installation"}),
      with_signature<decltype(::GetDelvonFiles), Owner::kPlugin, Buffer::kChanged>(
          {.name = "GetDelvonFiles",
           .argument_names = {"report path or null", "directory", "version key"},
           .writes = "copies of a monitoring installation's files into a new folder"}),
      with_signature<decltype(::GetOBValidationInfo)>(
          {.name = "GetOBValidationInfo",
           .argument_names = {"destination directory", "report path", "version key", "mode",
                              "ignored", "plugins file", "connection-manager file"},
           .writes = "\"Validation of Ostrel Broker properties file\", \"PARAMETER FILES\", "
                     "\"Validation of Connection Manager properties file\"; copies of both files"}),
      with_signature<decltype(::OBCopyFiles)>(
          {.name = "OBCopyFiles",
           .argument_names = {"report path or null", "name", "version", "destination directory"},
           .writes = "copies of the log files of a broker, a database or the admin server",
           .meanings = {{1, "no log file is known by this name"}}}),
      with_signature<decltype(::GetNetscapeInfo)>(
          {.name = "GetNetscapeInfo",
           .argument_names = {"report path", "server root", "server name"},
           .writes = "\"Netscape/iPlanet Configuration\""}),
      with_signature<decltype(::GetApacheInfo)>(
          {.name = "GetApacheInfo",
           .argument_names = {"report path", "server root"},
           .writes = "\"Apache Configuration\", \"Apache ScriptAlias Directory Listings\""}),
      with_signature<decltype(::RunCommand)>(
          {.name = "RunCommand",
           .argument_names = {"command", "entry point", "is library", "base or null",
                              "capture folder", "output file", "index or null"},
           .writes = "what a command prints, or a library's entry point leaves, in a folder",
           .meanings = {{ENAMETOOLONG, "the command or the path of the folder is too long"}}}),
  };
}

}  // namespace

const std::vector<Entry>& catalogue() {
  static const std::vector<Entry> entries = make_catalogue();
  return entries;
}

std::vector<std::string> plugin_names() {
  Names names{"pphm", "logs", "RmPatchInfoPHM", "FindAdminServer", "Copy_File"};
  for (const Entry& entry : catalogue()) names.push_back(entry.name);
  return names;
}

const Entry& find_entry(const std::string& name) {
  for (const Entry& entry : catalogue()) {
    if (entry.name == name) return entry;
  }
  throw UsageError("no call named " + name + "; \"sit list\" shows them all");
}

}  // namespace host
