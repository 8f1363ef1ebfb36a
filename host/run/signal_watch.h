// The signals that end a collection, and those that tell of ended children, as a descriptor.
#pragma once

#include <optional>

#include "support/descriptor.h"

namespace host {

class SignalWatch {
 public:
  // Holds them back from now on, but for those that this program was started to ignore.
  SignalWatch();

  [[nodiscard]] int descriptor() const { return signals_.get(); }

  // One that asks for the end; nothing when none has.
  [[nodiscard]] std::optional<int> take() const;

 private:
  Descriptor signals_;
};

}  // namespace host
