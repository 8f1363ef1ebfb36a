// SHA-256.
#pragma once

#include <memory>
#include <string>
#include <string_view>

struct evp_md_ctx_st;

namespace host {

class Digest {
 public:
  Digest();

  void add(std::string_view bytes);

  // In hexadecimal; nothing can be added any more.
  [[nodiscard]] std::string text();

 private:
  struct Free {
    void operator()(evp_md_ctx_st* context) const;
  };
  std::unique_ptr<evp_md_ctx_st, Free> context_;
};

}  // namespace host
