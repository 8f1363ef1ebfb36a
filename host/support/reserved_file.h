// A file whose room is taken before it is needed, so that a disk that fills up leaves it whole.
#pragma once

#include <sys/types.h>

#include <string>

#include "support/descriptor.h"
#include "support/folder.h"

namespace host {

class ReservedFile {
 public:
  // A new file in the folder, with room for so many bytes or as many as there are.
  ReservedFile(const OutputFolder& folder, const std::string& name, off_t size);

  // Writes all of the text or nothing.
  [[nodiscard]] bool write(const std::string& text);

  // Why that could not be done: an error number.
  [[nodiscard]] int error() const { return error_; }

 private:
  const OutputFolder& folder_;
  std::string name_;
  Descriptor file_;
  int error_ = 0;
};

}  // namespace host
