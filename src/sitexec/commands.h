// The collection commands, as their exported namesakes tell.
#pragma once

#include <cstdint>
#include <string_view>

#include "commutils/heap_text.h"

namespace sit::sitexec {

// The report that the host asks for.
struct Report {
  const char* path;
  int mode;
  int final;
};

[[nodiscard]] int write_environment(const Report& report) noexcept;
[[nodiscard]] int write_system(const Report& report, std::int16_t section) noexcept;
[[nodiscard]] int write_versions(const Report& report) noexcept;
[[nodiscard]] int write_java(const Report& report) noexcept;
[[nodiscard]] int write_summary(const Report& report, bool wants_further_versions) noexcept;

[[nodiscard]] int write_configuration(const Report& report, const char* version_key,
                                      int selector) noexcept;
[[nodiscard]] int write_files(const Report& report, const char* version_key, int selector) noexcept;
[[nodiscard]] int write_stores(const Report& report, const char* version_key,
                               int selector) noexcept;
// `directory` receives the path of the folder that is made.
[[nodiscard]] int copy_monitor_files(const char* path, char* directory,
                                     const char* version_key) noexcept;

struct PropertiesFiles {
  const char* brokers;  // where the plugins file is
  const char* connection_manager;
};
[[nodiscard]] int write_validation(const Report& report, const char* version_key,
                                   const PropertiesFiles& files, const char* destination) noexcept;
[[nodiscard]] int copy_logs(const char* path, const char* name, const char* version,
                            const char* destination) noexcept;

[[nodiscard]] int write_netscape(const char* path, const char* server_root,
                                 const char* server_name) noexcept;
[[nodiscard]] int write_apache(const char* path, std::string_view server_root) noexcept;

// The version keys of the installations of a selector, separated by ","; null when memory runs out.
[[nodiscard]] HeapText version_keys(int selector) noexcept;

}  // namespace sit::sitexec
