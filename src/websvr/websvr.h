// Web-server configuration: what the sections of both servers are made of.
#pragma once

#include <string_view>

#include "sit/websvr.h"
#include "situtil/path.h"

namespace sit::websvr {

// ---- Netscape/iPlanet ----

// Finds the instance that the host asks for. Returns what GetNetscapeInfo returns without it.
[[nodiscard]] int find_instance(const char* server_root, const char* server_name,
                                Path& instance) noexcept;

// As GetNetscapeServerDir and CheckNetscapeServerName.
[[nodiscard]] int search(const char* server_root, const char* server_name, Path& instance) noexcept;
[[nodiscard]] bool is_server(const char* server_root, const char* entry, const char* server_name,
                             unsigned int& flags) noexcept;

// As LogNetscapeConfig, GetNetscapeObjConf and LogNetscapeCGIDirs.
int write_instance(std::string_view instance) noexcept;
[[nodiscard]] int find_object_file(const char* magnus_conf, std::string_view instance,
                                   Path& object_file) noexcept;
[[nodiscard]] int list_cgi_directories(const char* object_file) noexcept;

// ---- Apache ----

// The configuration file below the root. False when there is none.
[[nodiscard]] bool find_apache_conf(std::string_view server_root, Path& conf) noexcept;

// Writes the sections. Returns 0, or why the configuration file could not be read.
[[nodiscard]] int write_apache(const char* conf, std::string_view server_root) noexcept;

// As FindApacheScriptAlias.
void list_script_aliases(const char* conf, std::string_view server_root) noexcept;

}  // namespace sit::websvr
