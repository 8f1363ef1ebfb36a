// Choosing steps by their ids.
#pragma once

#include <string>
#include <vector>

#include "steps/steps.h"

namespace host {

struct Selection {
  std::vector<std::string> only;  // none: all
  std::vector<std::string> skip;

  // Whether the step, which stands before all others, is wanted.
  [[nodiscard]] bool wants(const Step& step) const;
  [[nodiscard]] bool skips(const Step& step) const;

  // Whether a wanted step can be told only when the installations are known.
  [[nodiscard]] bool needs_installations() const;
};

// Has each step that is not chosen say why. What a chosen step needs is chosen, too. An id stands
// for a step, for all steps of its kind ("logs") or for all of an installation ("10.1B").
void select(std::vector<Subject>& subjects, const Selection& selection);

// Throws UsageError, with the nearest name, for an id that is of none of the steps nor of a kind.
void check(const Selection& selection, const std::vector<Subject>& subjects);

// Throws UsageError, with the reason, when there is no step of a kind that --only names.
void check_chosen(const Selection& selection, const std::vector<Subject>& subjects,
                  const std::vector<Installation>& installations);

}  // namespace host
