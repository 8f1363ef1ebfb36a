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
    Meaning{SIT_NO_SERVER, "no server instance under this root"},
    Meaning{SIT_SERVERS_AMBIGUOUS, "more than one server instance matches"},
    Meaning{SIT_NO_SERVER_OF_NAME, "no server instance has this name"},
    Meaning{SIT_NO_SERVER_CONFIG, "no server instance has this name, and one lacks magnus.conf"},
};
constexpr int kLastSystemError = 4095;

}  // namespace

std::string meaning_of(int code) {
  for (const Meaning& meaning : kMeanings) {
    if (meaning.code == code) return meaning.text;
  }
  if (code > 0 && code <= kLastSystemError) return std::generic_category().message(code);
  return "unknown result";
}

}  // namespace host
