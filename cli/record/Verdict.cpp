#include "cli/record/Verdict.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

constexpr std::pair<Verdict, std::string_view> kWords[] = {
    {Verdict::Passed, "passed"},      {Verdict::Differs, "differs"}, {Verdict::Missing, "missing"},
    {Verdict::Failed, "failed"},      {Verdict::Partly, "partly"},   {Verdict::Error, "error"},
    {Verdict::TimedOut, "timed-out"}, {Verdict::Crashed, "crashed"}, {Verdict::Stale, "stale"},
    {Verdict::Known, "known"},        {Verdict::NotRun, "not run"},
};

}  // namespace

std::string_view wordFor(Verdict verdict) {
  const auto* const found = std::find_if(std::begin(kWords), std::end(kWords),
                                         [verdict](auto& row) { return row.first == verdict; });
  return found->second;
}

bool isFailure(Verdict verdict) {
  return verdict != Verdict::Passed && verdict != Verdict::Known;
}

std::optional<Verdict> verdictFor(std::string_view word) {
  const auto* const found = std::find_if(std::begin(kWords), std::end(kWords),
                                         [word](auto& row) { return row.second == word; });
  return found != std::end(kWords) ? std::optional(found->first) : std::nullopt;
}
