// The configuration of one Netscape/iPlanet server instance.
#include "commfile.h"
#include "commutils/views.h"
#include "file_status.h"
#include "session.h"
#include "websvr/sections.h"
#include "websvr/values.h"
#include "websvr/websvr.h"

namespace sit::websvr {
namespace {

constexpr int kNoMagnusConf = 2;
constexpr const char* kConfigHeading = "\n\nContents of %s:\n\n";
constexpr const char* kConfigFailure = "Failed to read config file %s, error %d\n\n";

// The object file stays empty while it is unknown.
void write_main_files(const Path& magnus_conf, std::string_view instance,
                      Path& object_file) noexcept {
  if (write_contents("Contents of %s:\n\n", kConfigFailure, magnus_conf.c_str()) != 0) return;
  static_cast<void>(find_object_file(magnus_conf.c_str(), instance, object_file));
  if (object_file.empty()) {
    log("Unable to determine object file from %s\n\n", magnus_conf.c_str());
  } else {
    write_contents(kConfigHeading, kConfigFailure, object_file.c_str());
  }
}

void write_properties(std::string_view instance, std::string_view name) noexcept {
  Path properties;
  if (!compose_path(properties, {instance, name})) return;
  if (exists(properties.c_str())) {
    write_contents(kConfigHeading, kConfigFailure, properties.c_str());
  } else {
    log("%s does not exist\n\n", properties.c_str());
  }
}

void write_cgi_section(const Path& object_file) noexcept {
  log("\n\n");
  log_title("CGI directories");
  if (object_file.empty()) {
    log("Failed to locate object file for CGI directories\n");
    return;
  }
  log("Listing of CGI directories configured in %s\n", object_file.c_str());
  if (list_cgi_directories(object_file.c_str()) != SIT_OK) {
    log("Failed to log CGI dirs from %s\n", object_file.c_str());
  }
}

void write_startup_section(std::string_view instance) noexcept {
  log("\n\n");
  log_title("Startup Script");
  Path script;
  if (!compose_path(script, {instance, "/start"})) return;
  if (!exists(script.c_str())) {
    log("Unable to find startup script %s\n", script.c_str());
    return;
  }
  write_contents("Contents of %s\n\n", "Failed to open %s for reading, error is %d\n",
                 script.c_str());
}

}  // namespace

int find_instance(const char* server_root, const char* server_name, Path& instance) noexcept {
  if (is_missing(server_root)) return SIT_NO_SERVER;
  Path given;
  if (!compose(given, "The server root", {server_root})) return SIT_NOT_FOUND;
  Path root;
  static_cast<void>(root.append(without_trailing_slash(given.view())));
  log_verbose("Using Netscape path %s\n", root.c_str());
  if (!exists(root.c_str())) return SIT_NOT_FOUND;
  const int found = search(root.c_str(), server_name, instance);
  if (found != SIT_OK && is_verbose()) {
    log("Failed to find server '%s' in %s\n", server_name, root.c_str());
  }
  return found;
}

int write_instance(std::string_view instance) noexcept {
  log_title("Configuration Files");
  Path magnus_conf;
  if (!compose_path(magnus_conf, {instance, "/config/magnus.conf"})) return kNoMagnusConf;
  if (!exists(magnus_conf.c_str())) {
    log("%s does not exist, aborting\n\n", magnus_conf.c_str());
    return kNoMagnusConf;
  }
  Path object_file;
  write_main_files(magnus_conf, instance, object_file);
  write_properties(instance, "/config/servlets.properties");
  write_properties(instance, "/config/rules.properties");
  write_cgi_section(object_file);
  write_startup_section(instance);
  return SIT_OK;
}

}  // namespace sit::websvr
