#include "bundle/digest.h"

#include <openssl/evp.h>

#include <array>

#include "support/failure.h"

namespace host {
namespace {

void check(int result) {
  if (result != 1) throw Failure("SHA-256 is not to be had here");
}

}  // namespace

void Digest::Free::operator()(evp_md_ctx_st* context) const { ::EVP_MD_CTX_free(context); }

Digest::Digest() : context_(::EVP_MD_CTX_new()) {
  check(::EVP_DigestInit_ex(context_.get(), ::EVP_sha256(), nullptr));
}

void Digest::add(std::string_view bytes) {
  check(::EVP_DigestUpdate(context_.get(), bytes.data(), bytes.size()));
}

std::string Digest::text() {
  std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
  unsigned length = 0;
  check(::EVP_DigestFinal_ex(context_.get(), bytes.data(), &length));
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (unsigned i = 0; i < length; ++i) {
    text += kDigits[bytes[i] / 16];
    text += kDigits[bytes[i] % 16];
  }
  return text;
}

}  // namespace host
