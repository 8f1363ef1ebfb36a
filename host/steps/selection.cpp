#include "steps/selection.h"

#include <algorithm>
#include <set>

#include "support/failure.h"
#include "support/text.h"

namespace host {
namespace {

bool names(const std::string& id, const Step& step) {
  return id == step.id || id == step.kind->id || step.id.starts_with(id + "/");
}

bool names_any(const std::vector<std::string>& ids, const Step& step) {
  return std::any_of(ids.begin(), ids.end(),
                     [&step](const std::string& id) { return names(id, step); });
}

Step* find_needed(Subject& subject, const Step& step) {
  for (Step& other : subject.steps) {
    if (other.kind->id == std::string(step.kind->needs)) return &other;
  }
  return nullptr;
}

// What a chosen step needs is chosen, too; where it must not be, neither is the step.
void see_to_needs(Subject& subject, Step& step, const Selection& selection) {
  Step* needed = find_needed(subject, step);
  if (needed == nullptr) return;
  if (selection.skips(*needed)) {
    step.left_out = "needs " + needed->id + ", which is left out";
  } else {
    needed->left_out.clear();
  }
}

std::set<std::string> known_ids(const std::vector<Subject>& subjects) {
  std::set<std::string> known;
  for (const StepKind& kind : step_kinds()) known.insert(kind.id);
  for (const Subject& subject : subjects) {
    for (const Step& step : subject.steps) {
      known.insert(step.id);
      if (const std::size_t slash = step.id.find('/'); slash != std::string::npos) {
        known.insert(step.id.substr(0, slash));
      }
    }
  }
  return known;
}

}  // namespace

bool Selection::wants(const Step& step) const {
  return !skips(step) && (only.empty() || names_any(only, step));
}

bool Selection::skips(const Step& step) const { return names_any(skip, step); }

bool Selection::needs_installations() const {
  const auto is_independent = [](const std::string& id) {
    const std::string whole = id.substr(0, id.find('/'));
    return std::any_of(step_kinds().begin(), step_kinds().end(), [&whole](const StepKind& kind) {
      return kind.is_independent &&
             (whole == kind.id || whole.starts_with(kind.id + std::string("-")));
    });
  };
  return only.empty() || !std::all_of(only.begin(), only.end(), is_independent);
}

void select(std::vector<Subject>& subjects, const Selection& selection) {
  for (Subject& subject : subjects) {
    for (Step& step : subject.steps) {
      if (!selection.wants(step)) step.left_out = "not among --only";
      if (selection.skips(step)) step.left_out = "left out by --skip";
    }
    for (Step& step : subject.steps) {
      if (step.left_out.empty()) see_to_needs(subject, step, selection);
    }
  }
}

void check(const Selection& selection, const std::vector<Subject>& subjects) {
  const std::set<std::string> known = known_ids(subjects);
  std::vector<std::string> given = selection.only;
  given.insert(given.end(), selection.skip.begin(), selection.skip.end());
  for (const std::string& id : given) {
    if (known.contains(id)) continue;
    const std::string near = nearest(id, {known.begin(), known.end()});
    throw UsageError("no step \"" + id + "\"" +
                     (near.empty() ? ";" : "; did you mean \"" + near + "\"?") +
                     " sit collect --list-steps shows them all");
  }
}

void check_chosen(const Selection& selection, const std::vector<Subject>& subjects,
                  const std::vector<Installation>& installations) {
  std::set<std::string> there;
  for (const Subject& subject : subjects) {
    for (const Step& step : subject.steps) there.insert(step.kind->id);
  }
  for (const StepKind& kind : step_kinds()) {
    const bool is_named =
        std::find(selection.only.begin(), selection.only.end(), kind.id) != selection.only.end();
    if (!is_named || there.contains(kind.id) || kind.on == On::kDiscovery) continue;
    throw UsageError(std::string("no step \"") + kind.id +
                     "\": " + why_absent(kind, installations));
  }
}

}  // namespace host
