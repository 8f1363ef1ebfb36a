#include "steps/installation.h"

#include <nlohmann/json.hpp>

namespace host {
namespace {

// A product's texts need not be UTF-8, but must come back byte for byte: each byte is sent as the
// character of its number.
std::string sent(const std::string& text) {
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x80) result += static_cast<char>(0xc0U | (byte >> 6U));
    result += static_cast<char>(byte < 0x80 ? byte : 0x80U | (byte & 0x3fU));
  }
  return result;
}

std::string received(const std::string& text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    auto byte = static_cast<unsigned char>(text[i]);
    if (byte >= 0xc0 && i + 1 < text.size()) {
      byte =
          static_cast<unsigned char>(byte << 6U) | (static_cast<unsigned char>(text[++i]) & 0x3fU);
    }
    result += static_cast<char>(byte);
  }
  return result;
}

}  // namespace

void to_json(nlohmann::json& json, const Installation& installation) {
  json = {{"key", sent(installation.key)},
          {"version", sent(installation.version)},
          {"directory", sent(installation.directory)},
          {"major", installation.major},
          {"is_monitor", installation.is_monitor}};
}

void from_json(const nlohmann::json& json, Installation& installation) {
  installation.key = received(json.at("key"));
  installation.version = received(json.at("version"));
  installation.directory = received(json.at("directory"));
  json.at("major").get_to(installation.major);
  json.at("is_monitor").get_to(installation.is_monitor);
}

void to_json(nlohmann::json& json, const Found& found) {
  json = {{"installations", found.installations}, {"missing", found.missing}};
}

void from_json(const nlohmann::json& json, Found& found) {
  json.at("installations").get_to(found.installations);
  json.at("missing").get_to(found.missing);
}

}  // namespace host
