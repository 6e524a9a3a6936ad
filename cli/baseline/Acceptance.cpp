#include "cli/baseline/Acceptance.h"

#include <map>
#include <utility>

#include "cli/record/ContentHash.h"
#include "cli/record/RecordFolder.h"
#include "cli/record/UnchangedFile.h"
#include "cli/suite/FormatSelection.h"
#include "cli/suite/MasterChecks.h"
#include "cli/system/CommandError.h"

namespace {

using Kind = ChangeOutcome::Kind;

MasterChange changeOf(const PairRecord& pair) {
  return {pair.master, pair.masterFile.hash, pair.outputFile.hash, pair.output};
}

std::string withMessage(const char* what, const PairRecord& pair) {
  return pair.message.empty() ? what : std::string(what) + ": " + pair.message;
}

bool isTextFormat(const std::string& name) {
  static std::map<std::string, bool> known;
  auto place = known.find(name);
  if (place == known.end()) {
    const bool isText = createPairEngine(formatNamed(name))->getCleansingPatterns() != nullptr;
    place = known.emplace(name, isText).first;
  }
  return place->second;
}

}  // namespace

std::optional<std::string> whyNotAMaster(const std::string& file, std::string_view bytes,
                                         const std::string& master, const std::string& format) {
  if (bytes.empty()) {
    return "the output is empty";
  }
  const auto why = whyInvalid(file, bytes, master, isTextFormat(format));
  return why ? std::optional("the output is not valid: " + *why) : std::nullopt;
}

std::optional<std::string> whyNotAcceptable(const PairRecord& pair) {
  switch (pair.verdict) {
    case Verdict::Passed:
      return "the pair passed";
    case Verdict::Differs:
    case Verdict::Known:
      break;
    case Verdict::Missing:
      return withMessage("there is nothing to accept", pair);
    case Verdict::Failed:
      return withMessage("the output is not valid in its own format", pair);
    case Verdict::Partly:
      return "only a part of the output was compared: it contains a NUL byte";
    case Verdict::Error:
      return withMessage("it could not be compared", pair);
    case Verdict::TimedOut:
      return "its comparison took too long";
    case Verdict::Crashed:
      return "its comparison crashed";
    case Verdict::Stale:
      return withMessage("the output is stale", pair);
    case Verdict::NotRun:
      return withMessage("it was not compared", pair);
  }
  if (pair.masterFile.hash.empty() || pair.outputFile.hash.empty()) {
    return "the record does not hold the hashes of what was compared";
  }
  return std::nullopt;
}

void MasterUses::add(const PairRecord& pair) {
  const std::string& hash = pair.outputFile.hash;
  if (pair.master.empty() || hash.empty()) {
    return;
  }
  const auto [place, isNew] = m_uses.try_emplace(pair.master, Use{pair.output, hash, {}});
  if (!isNew && place->second.outputHash != hash) {
    place->second.otherOutput = pair.output;
  }
}

std::optional<std::string> MasterUses::conflictOf(const PairRecord& pair) const {
  const auto use = m_uses.find(pair.master);
  if (use == m_uses.end() || use->second.otherOutput.empty()) {
    return std::nullopt;
  }
  return "it is the master of several outputs, which are not the same: " + use->second.output +
         " and " + use->second.otherOutput;
}

Acceptance::Acceptance(Baselines& baselines, const RecordReader* record, const MasterUses* uses)
    : m_baselines(baselines), m_record(record), m_uses(uses) {}

/// The pairs that may be accepted, and where their outcomes belong.
struct Acceptance::Plan {
  ChangeReport report;  ///< with the refusals of all others
  std::vector<MasterChange> changes;
  std::vector<std::size_t> places;  ///< of the outcomes of `changes`
  struct Origin {
    std::string format;
    const PairRecord* pair;  ///< null: an output without a master
  };
  std::map<std::string, Origin> origins;  ///< by output, as changes name it
};

Acceptance::Plan Acceptance::planFor(const Pairs& pairs,
                                     const std::vector<NewOutput>& outputs) const {
  Plan plan;
  for (const PairRecord* const pair : pairs) {
    auto why = whyNotAcceptable(*pair);
    if (!why && m_uses != nullptr) {
      why = m_uses->conflictOf(*pair);
    }
    plan.report.outcomes.push_back(
        {why ? Kind::Refused : Kind::Done, pair->master, why.value_or(std::string())});
    if (!why) {
      plan.changes.push_back(changeOf(*pair));
      plan.places.push_back(plan.report.outcomes.size() - 1);
      plan.origins[pair->output] = {pair->format, pair};
    }
  }
  for (const NewOutput& output : outputs) {
    plan.report.outcomes.push_back({Kind::Done, output.master, {}});
    plan.changes.push_back({output.master, {}, output.hash, output.output});
    plan.places.push_back(plan.report.outcomes.size() - 1);
    plan.origins[output.output] = {output.format, nullptr};
  }
  return plan;
}

ContentSource Acceptance::sourceFor(const Plan& plan) const {
  return [this, &plan](const MasterChange& change) {
    const auto& [format, pair] = plan.origins.at(change.source);
    std::string file = change.source;
    std::optional<std::string> bytes = readUnchanged(file, change.after);
    const std::string evidence = pair != nullptr ? pair->outputFile.evidence : "";
    if (!bytes && m_record != nullptr && evidence == kEvidenceKept) {
      bytes = m_record->evidence(change.after);
      file = m_record->folder() + '/' + kEvidenceFolder + '/' + change.after;
    }
    if (!bytes) {
      throw CommandError("the output is no longer what was compared" +
                         (m_record != nullptr && !evidence.empty()
                              ? ", and the record does not hold it: " + evidence
                              : std::string()));
    }
    if (const auto why = whyNotAMaster(file, *bytes, change.master, format)) {
      throw CommandError(*why);
    }
    return std::move(*bytes);
  };
}

ChangeReport Acceptance::check(const Pairs& pairs, const std::vector<NewOutput>& outputs) const {
  Plan plan = planFor(pairs, outputs);
  plan.report.takeOver(plan.places, m_baselines.check(plan.changes, sourceFor(plan)));
  return std::move(plan.report);
}

ChangeReport Acceptance::accept(const Pairs& pairs, const std::vector<NewOutput>& outputs) {
  Plan plan = planFor(pairs, outputs);
  plan.report.takeOver(plan.places,
                       m_baselines.apply({"accept", 0}, plan.changes, sourceFor(plan)));
  return std::move(plan.report);
}
