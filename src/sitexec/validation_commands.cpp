// The commands about brokers, the connection manager and the admin server.
#include "obvalid/log_table.h"
#include "obvalid/obvalid.h"
#include "pelver/installations.h"
#include "pelver/keys.h"
#include "sitexec/commands.h"
#include "sitexec/frame.h"

namespace sit::sitexec {
namespace {

// Releases 7 and 8 keep their brokers in another way: keys that look like theirs name nothing.
bool can_be_validated(std::string_view key) noexcept {
  return !contains(key, "8.") && !contains(key, "7.");
}

PHMVER* find_installation(const char* version_key) noexcept {
  if (!can_be_validated(text_of(version_key))) return nullptr;
  const pelver::VersionKey key{version_key};
  return pelver::installations().find([&key](const PHMVER& record) {
    return key.means(record, SEL_PRODUCT, {.nothing_else = true});
  });
}

int validate_manager(PHMVER& record, const char* properties,
                     const obvalid::Copies& copies) noexcept {
  const int result = obvalid::validate_connection_manager(record, properties, copies);
  if (result != SIT_NO_DATABASE_TOOL) return result;
  log("INFORMATION: Skipping this validation (dbconfig script not found)\n");
  return SIT_OK;
}

int validate(PHMVER& record, const PropertiesFiles& files, const obvalid::Copies& copies) noexcept {
  log_title("Validation of Ostrel Broker properties file");
  const int brokers = obvalid::validate_brokers(record, files.brokers, nullptr, copies);
  if (brokers == SIT_OK && is_verbose()) obvalid::list_logs();
  log("\n\n");
  log_title("Validation of Connection Manager properties file");
  const int manager = validate_manager(record, files.connection_manager, copies);
  return brokers == SIT_OK && manager == SIT_OK ? SIT_OK : SIT_VALIDATION_FAILED;
}

}  // namespace

int write_validation(const Report& report, const char* version_key, const PropertiesFiles& files,
                     const char* destination) noexcept {
  PHMVER* record = nullptr;
  const auto find = [&record, version_key]() -> std::optional<int> {
    record = find_installation(version_key);
    if (record == nullptr) return SIT_NO_MATCHING_INSTALLATION;
    return std::nullopt;
  };
  return run_framed(about_installations(report), find, [&] {
    return validate(*record, files, {.are_wanted = true, .destination = destination});
  });
}

int copy_logs(const char* path, const char* name, const char* version,
              const char* destination) noexcept {
  const auto misses_argument = [=]() -> std::optional<int> {
    if (name == nullptr || version == nullptr || destination == nullptr) return SIT_FAILED;
    return std::nullopt;
  };
  return run_framed(taking_notes(path), misses_argument,
                    [=] { return obvalid::copy_logs(name, version, destination); });
}

}  // namespace sit::sitexec
