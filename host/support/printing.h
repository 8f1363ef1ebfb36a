// Standard output, by way of a pager if somebody is looking.
#pragma once

#include <cstdio>
#include <string>

namespace host {

class Printing {
 public:
  Printing();
  Printing(const Printing&) = delete;
  Printing& operator=(const Printing&) = delete;
  ~Printing();

  // False when nobody takes it any more.
  bool print(const std::string& text);

 private:
  bool is_terminal_;
  FILE* pipe_ = nullptr;
};

}  // namespace host
