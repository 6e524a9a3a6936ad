#include "cli/record/JoinedRecords.h"

#include <algorithm>
#include <utility>

#include "cli/system/CommandError.h"
#include "cli/system/ExitStatus.h"

/// A record that is being joined, and its next pair.
struct JoinedRecords::Source {
  explicit Source(const std::string& folder) : reader(folder), pair(reader.next()) {}

  RecordReader reader;
  std::optional<PairRecord> pair;
};

namespace {

std::string listed(const std::vector<std::uint32_t>& numbers) {
  std::string text;
  for (const std::uint32_t number : numbers) {
    text += (text.empty() ? "" : ", ") + std::to_string(number);
  }
  return text;
}

void requireSame(const RecordReader& one, const RecordReader& other) {
  const RunRecord& a = one.run();
  const RunRecord& b = other.run();
  const char* const difference = a.program != b.program             ? "versions of orvdiff"
                                 : a.shards.count != b.shards.count ? "numbers of shards"
                                 : a.suite != b.suite               ? "suites, formats or options"
                                                                    : nullptr;
  if (difference != nullptr) {
    throw CommandError(one.folder() + " and " + other.folder() +
                       " cannot be joined: they are of different " + difference);
  }
}

/// Takes the shards of `run` out of `missing`.
void cover(std::vector<std::uint32_t>& missing, const RecordReader& record) {
  for (const std::uint32_t index : record.run().shards.indices) {
    const auto found = std::find(missing.begin(), missing.end(), index);
    if (found == missing.end()) {
      throw CommandError("shard " + std::to_string(index) + " is there twice: again in " +
                         record.folder());
    }
    missing.erase(found);
  }
}

/// Takes what a shard tells into what others told. A shard that tells nothing, because it was only
/// to see a part of its share, leaves nothing to be told about the whole.
void join(std::vector<KnownUse>& uses, const std::vector<KnownUse>& others) {
  uses.resize(std::min(uses.size(), others.size()));
  for (std::size_t i = 0; i < uses.size(); ++i) {
    uses[i].occurs = uses[i].occurs || others[i].occurs;
    uses[i].applies = uses[i].applies || others[i].applies;
  }
}

/// Says what the shards can only tell together, unless one of them has said it.
void addRemarks(const std::vector<KnownUse>& uses, std::vector<std::string>& remarks) {
  for (const KnownUse& use : uses) {
    const std::string remark = remarkOn(use);
    const bool isSaid =
        std::any_of(remarks.begin(), remarks.end(), [&use](const std::string& said) {
          return said.size() >= use.what.size() &&
                 said.compare(said.size() - use.what.size(), use.what.size(), use.what) == 0;
        });
    if (!remark.empty() && !isSaid) {
      remarks.push_back(remark);
    }
  }
}

}  // namespace

RunRecord JoinedRecords::joinRuns(bool mustBeWhole) const {
  RunRecord merged = m_sources.front()->reader.run();
  std::vector<std::uint32_t> missing(merged.shards.count);
  for (std::uint32_t i = 0; i < merged.shards.count; ++i) {
    missing[i] = i + 1;
  }
  const std::vector<std::uint32_t> all = missing;
  merged.reports = 0;
  merged.unverified.clear();
  FindingTally findings;  // every shard accounts for its own reports, so nothing is there twice
  merged.notes.clear();
  merged.remarks.clear();
  merged.status = kExitPassed;
  for (const auto& source : m_sources) {
    const RunRecord& run = source->reader.run();
    requireSame(m_sources.front()->reader, source->reader);
    cover(missing, source->reader);
    join(merged.known, run.known);
    merged.start = std::min(merged.start, run.start);
    merged.end = std::max(merged.end, run.end);
    merged.complete = merged.complete && run.complete;
    merged.reports += run.reports;
    // A run that was killed has not written how it ended, and never a pass.
    const int leastStatus = run.complete ? kExitPassed : kExitTrouble;
    merged.status = std::max({merged.status, run.status, leastStatus});
    merged.unverified.insert(merged.unverified.end(), run.unverified.begin(), run.unverified.end());
    merged.notes.insert(merged.notes.end(), run.notes.begin(), run.notes.end());
    merged.remarks.insert(merged.remarks.end(), run.remarks.begin(), run.remarks.end());
    for (const FindingTotal& total : run.findings) {
      findings.add(total);
    }
  }
  if (mustBeWhole && !missing.empty()) {
    throw CommandError("of " + std::to_string(merged.shards.count) +
                       " shards these are missing: " + listed(missing));
  }
  merged.findings = findings.totals();
  std::sort(merged.unverified.begin(), merged.unverified.end());
  std::sort(merged.notes.begin(), merged.notes.end());
  merged.notes.erase(std::unique(merged.notes.begin(), merged.notes.end()), merged.notes.end());
  merged.shards.indices.clear();
  std::set_difference(all.begin(), all.end(), missing.begin(), missing.end(),
                      std::back_inserter(merged.shards.indices));
  if (missing.empty()) {
    merged.shards = {};
    if (merged.complete) {
      addRemarks(merged.known, merged.remarks);
    }
    merged.known.clear();
  }
  if (missing.empty() && merged.unverified.size() == merged.reports && !merged.mayBeEmpty) {
    merged.notes.emplace_back("nothing to verify (use --allow-none to accept this)");
    merged.status = std::max<int>(merged.status, kExitTrouble);  // no shard alone can tell
  }
  return merged;
}

JoinedRecords::JoinedRecords(const std::vector<std::string>& folders, bool mustBeWhole) {
  for (const std::string& folder : folders) {
    m_sources.push_back(std::make_unique<Source>(folder));
  }
  m_run = joinRuns(mustBeWhole);
  for (const auto& source : m_sources) {
    enqueue(*source);
  }
}

JoinedRecords::~JoinedRecords() = default;

std::optional<JoinedPair> JoinedRecords::next() {
  if (m_queue.empty()) {
    return std::nullopt;
  }
  Source& first = *m_queue.top();
  m_queue.pop();
  JoinedPair pair = {std::move(*first.pair), first.reader};
  first.pair = first.reader.next();
  enqueue(first);
  return pair;
}

void JoinedRecords::enqueue(Source& source) {
  if (source.pair) {
    m_queue.push(&source);
  }
}

bool JoinedRecords::IsLater::operator()(const Source* a, const Source* b) const {
  return a->pair->report > b->pair->report;
}
