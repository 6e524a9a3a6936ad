#include "cli/review/ReviewMasters.h"

#include "cli/baseline/Undo.h"
#include "cli/system/CommandError.h"

ChangeReport ReviewMasters::check(const std::vector<std::size_t>& pairs) const {
  return m_acceptance.check(recordsOf(pairs));
}

ChangeReport ReviewMasters::accept(const std::vector<std::size_t>& pairs) {
  return m_acceptance.accept(recordsOf(pairs));
}

std::string ReviewMasters::undo(std::uint64_t entry) {
  UndoRequest request;
  request.id = entry;
  try {
    return problemOf(::undo(m_baselines, request).changes);
  } catch (const CommandError& error) {
    return error.what();
  }
}

std::string problemOf(const ChangeReport& report) {
  for (const ChangeOutcome& outcome : report.outcomes) {
    if (outcome.kind == ChangeOutcome::Kind::Refused ||
        outcome.kind == ChangeOutcome::Kind::Failed) {
      return outcome.master + ": " + outcome.why;
    }
  }
  return report.problems.empty() ? "" : report.problems.front();
}

std::vector<const PairRecord*> ReviewMasters::recordsOf(
    const std::vector<std::size_t>& pairs) const {
  std::vector<const PairRecord*> records;
  records.reserve(pairs.size());
  for (const std::size_t pair : pairs) {
    records.push_back(&m_material.pairs()[pair].record);
  }
  return records;
}
