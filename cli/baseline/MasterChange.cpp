#include "cli/baseline/MasterChange.h"

#include <algorithm>
#include <utility>

std::size_t ChangeReport::count(ChangeOutcome::Kind kind) const {
  return static_cast<std::size_t>(
      std::count_if(outcomes.begin(), outcomes.end(),
                    [kind](const ChangeOutcome& outcome) { return outcome.kind == kind; }));
}

void ChangeReport::takeOver(const std::vector<std::size_t>& places, ChangeReport part) {
  for (std::size_t i = 0; i < places.size(); ++i) {
    outcomes[places[i]] = std::move(part.outcomes[i]);
  }
  entry = part.entry;
  problems = std::move(part.problems);
}
