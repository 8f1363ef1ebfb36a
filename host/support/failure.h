// What goes wrong before or beside the collecting.
#pragma once

#include <stdexcept>

namespace host {

// Something that the user must be told in one line.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The command line asks for what there is not.
class UsageError : public Failure {
 public:
  using Failure::Failure;
};

}  // namespace host
