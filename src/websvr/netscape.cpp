// The configuration of one Netscape/iPlanet server instance.
#include <array>

#include "commfile.h"
#include "commutils/views.h"
#include "session.h"
#include "sit/situtil.h"
#include "websvr/websvr.h"

namespace {

using PathBuffer = std::array<char, SIT_PATH_BYTES>;

constexpr int kNoMagnusConf = 2;
constexpr const char* kConfigHeading = "\n\nContents of %s:\n\n";
constexpr const char* kConfigFailure = "Failed to read config file %s, error %d\n\n";

int begin_report(const char* path) noexcept {
  const int opened = LogOpen(path, SIT_CREATE);
  if (opened != SIT_OK) return opened;
  LogMsg("\n");
  LogTitle("Netscape/iPlanet Configuration");
  return SIT_OK;
}

int find_instance(const char* server_root, const char* server_name, char* instance) noexcept {
  if (sit::is_missing(server_root)) return SIT_NO_SERVER;
  sit::Path given;
  if (!sit::compose(given, "The server root", {server_root})) return SIT_NOT_FOUND;
  sit::Path root;
  static_cast<void>(root.append(sit::without_trailing_slash(given.view())));
  LogMsgV("Using Netscape path %s\n", root.c_str());
  if (FileExists(root.c_str()) == 0) return SIT_NOT_FOUND;
  const int found = GetNetscapeServerDir(root.c_str(), server_name, instance);
  if (found != SIT_OK && sit::is_verbose()) {
    LogMsg("Failed to find server '%s' in %s\n", server_name, root.c_str());
  }
  return found;
}

void log_main_files(const sit::Path& magnus_conf, const char* instance,
                    char* object_file) noexcept {
  if (sit::log_contents("Contents of %s:\n\n", kConfigFailure, magnus_conf.c_str()) != 0) return;
  static_cast<void>(GetNetscapeObjConf(magnus_conf.c_str(), instance, object_file));
  if (sit::is_missing(object_file)) {
    LogMsg("Unable to determine object file from %s\n\n", magnus_conf.c_str());
  } else {
    sit::log_contents(kConfigHeading, kConfigFailure, object_file);
  }
}

void log_properties(std::string_view instance, std::string_view name) noexcept {
  sit::Path properties;
  if (!sit::compose(properties, "The path", {instance, name})) return;
  if (FileExists(properties.c_str()) != 0) {
    sit::log_contents(kConfigHeading, kConfigFailure, properties.c_str());
  } else {
    LogMsg("%s does not exist\n\n", properties.c_str());
  }
}

void log_cgi_section(const char* object_file) noexcept {
  LogMsg("\n\n");
  LogTitle("CGI directories");
  if (sit::is_missing(object_file)) {
    LogMsg("Failed to locate object file for CGI directories\n");
    return;
  }
  LogMsg("Listing of CGI directories configured in %s\n", object_file);
  if (LogNetscapeCGIDirs(object_file) != SIT_OK) {
    LogMsg("Failed to log CGI dirs from %s\n", object_file);
  }
}

void log_startup_section(std::string_view instance) noexcept {
  LogMsg("\n\n");
  LogTitle("Startup Script");
  sit::Path script;
  if (!sit::compose(script, "The path", {instance, "/start"})) return;
  if (FileExists(script.c_str()) == 0) {
    LogMsg("Unable to find startup script %s\n", script.c_str());
    return;
  }
  sit::log_contents("Contents of %s\n\n", "Failed to open %s for reading, error is %d\n",
                    script.c_str());
}

}  // namespace

extern "C" {

int GetNetscapeInfo(const char* path, const char* server_root, const char* server_name) noexcept {
  if (sit::is_missing(path)) return SIT_NO_REPORT_PATH;
  const bool shows_search = sit::is_verbose();
  if (shows_search) {
    if (const int opened = begin_report(path); opened != SIT_OK) return opened;
  }
  PathBuffer instance{};
  if (const int found = find_instance(server_root, server_name, instance.data()); found != SIT_OK) {
    if (shows_search) static_cast<void>(LogClose(SIT_FINAL));
    return found;
  }
  if (!shows_search) {
    if (const int opened = begin_report(path); opened != SIT_OK) return opened;
  }
  static_cast<void>(LogNetscapeConfig(instance.data()));
  return LogClose(SIT_FINAL);
}

int LogNetscapeConfig(const char* instance) noexcept {
  const std::string_view directory = sit::text_of(instance);
  LogTitle("Configuration Files");
  sit::Path magnus_conf;
  if (!sit::compose(magnus_conf, "The path", {directory, "/config/magnus.conf"})) {
    return kNoMagnusConf;
  }
  if (FileExists(magnus_conf.c_str()) == 0) {
    LogMsg("%s does not exist, aborting\n\n", magnus_conf.c_str());
    return kNoMagnusConf;
  }
  PathBuffer object_file{};  // empty while unknown
  log_main_files(magnus_conf, instance, object_file.data());
  log_properties(directory, "/config/servlets.properties");
  log_properties(directory, "/config/rules.properties");
  log_cgi_section(object_file.data());
  log_startup_section(directory);
  return SIT_OK;
}

}  // extern "C"
