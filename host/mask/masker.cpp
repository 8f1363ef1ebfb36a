#include "mask/masker.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rand.h>

#include <cstdio>

#include "support/failure.h"

namespace host {

Masker::Masker(MaskRules rules) : rules_(std::move(rules)), key_() {
  if (::RAND_bytes(key_.data(), static_cast<int>(key_.size())) != 1) {
    throw Failure("no random numbers can be had, so no secret can be masked");
  }
}

Masker::~Masker() { ::OPENSSL_cleanse(key_.data(), key_.size()); }

std::string Masker::mask_of(std::string_view secret) const {
  std::array<unsigned char, EVP_MAX_MD_SIZE> code{};
  unsigned length = 0;
  ::HMAC(::EVP_sha256(), key_.data(), static_cast<int>(key_.size()),
         reinterpret_cast<const unsigned char*>(secret.data()), secret.size(), code.data(),
         &length);
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%02x%02x%02x%02x]", code[0], code[1], code[2], code[3]);
  return std::string(kMaskStart) + text.data();
}

std::string Masker::masked(std::string_view text) {
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t newline = std::min(text.find('\n', at), text.size());
    const std::string_view line = text.substr(at, newline - at);
    std::size_t done = 0;
    for (const Secret& secret : secrets_in(line, rules_)) {
      result += line.substr(done, secret.begin - done);
      result += mask_of(line.substr(secret.begin, secret.end - secret.begin));
      done = secret.end;
      count(secret.rule);
    }
    result += line.substr(done);
    if (newline < text.size()) result += '\n';
    at = newline + 1;
  }
  return result;
}

void Masker::count(std::string_view rule, std::uint64_t secrets) {
  counts_[std::string(rule)] += secrets;
}

}  // namespace host
