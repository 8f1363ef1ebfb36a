#include "meaning.h"

#include <array>
#include <system_error>

#include "sit/codes.h"

namespace host {
namespace {

struct Meaning {
  int code;
  const char* text;
};
constexpr std::array kMeanings{
    Meaning{SIT_OK, "success"},
    Meaning{SIT_FAILED, "a required argument is missing"},
    Meaning{SIT_NO_REPORT_PATH, "no report path given"},
    Meaning{SIT_NOT_FOUND, "directory, configuration file or temporary name not found"},
    Meaning{SIT_BAD_OPEN_MODE, "open mode is neither 64 nor 1024"},
    Meaning{SIT_NO_INSTALLATION, "no installation found, or report path longer than 255"},
    Meaning{SIT_NO_BROKER_PROPERTIES, "broker properties file missing or a directory"},
    Meaning{SIT_NO_PLUGINS_FILE, "admin-server plugins file missing or a directory"},
    Meaning{SIT_NO_MATCHING_INSTALLATION, "no installation matches the version key"},
    Meaning{SIT_VALIDATION_FAILED, "a validation failed or could not be made"},
    Meaning{SIT_PLUGINS_UNREADABLE, "admin-server plugins file cannot be opened"},
    Meaning{SIT_NO_ADMIN_SERVER, "the installation has no admin server"},
    Meaning{SIT_NO_ADMIN_DIRECTORY, "admin server's work directory not found"},
    Meaning{SIT_NO_ADMIN_LOGS, "no admin-server log could be copied"},
    Meaning{SIT_NO_SERVER, "no server instance under this root"},
    Meaning{SIT_SERVERS_AMBIGUOUS, "more than one server instance matches"},
    Meaning{SIT_NO_SERVER_OF_NAME, "no server instance has this name"},
    Meaning{SIT_NO_SERVER_CONFIG, "no server instance has this name, and one lacks magnus.conf"},
    Meaning{SIT_DATABASE_LEFT_OUT, "logs copied, but for that of a database of the same name"},
};
constexpr int kLastSystemError = 4095;

}  // namespace

std::string meaning_of(const Entry& entry, int code) {
  if (const auto own = entry.meanings.find(code); own != entry.meanings.end()) return own->second;
  for (const Meaning& meaning : kMeanings) {
    if (meaning.code == code) return meaning.text;
  }
  if (code > 0 && code <= kLastSystemError) return std::generic_category().message(code);
  return "unknown result";
}

}  // namespace host
