#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "cli/baseline/Baselines.h"
#include "cli/record/PairRecord.h"
#include "cli/record/RecordReader.h"

/// Why the output of a pair must not become its master, whatever a person thinks of it; nothing if
/// it may: it was compared to its end, and differs.
std::optional<std::string> whyNotAcceptable(const PairRecord& pair);

/// Why an output, whose bytes `file` holds, cannot be a master of that name: it is empty, or not
/// valid in its own format. Nothing if it can.
std::optional<std::string> whyNotAMaster(const std::string& file, std::string_view bytes,
                                         const std::string& master, const std::string& format);

/// Knows for each master what it is compared with: a picture can be the master of several formats.
/// An output cannot become a master that another output of the run would then differ from.
class MasterUses {
 public:
  /// Call it for every pair of the run, whatever its verdict.
  void add(const PairRecord& pair);

  /// Why the pair cannot be accepted without breaking another one; nothing if it can.
  std::optional<std::string> conflictOf(const PairRecord& pair) const;

 private:
  struct Use {
    std::string output;
    std::string outputHash;
    std::string otherOutput;  ///< the first with another content; empty: all have the same
  };
  std::unordered_map<std::string, Use> m_uses;  ///< by master
};

/// An output without a master, and the master that it is to become.
struct NewOutput {
  std::string output;
  std::string master;
  std::string format;
  std::string hash;  ///< of the output
};

/// Makes outputs of a run's pairs their masters. Everything runs on the caller's thread.
///
///     Acceptance acceptance(baselines, &record);
///     ChangeReport seen = acceptance.check(pairs);    // what would happen
///     ChangeReport done = acceptance.accept(pairs);   // one entry of the journal: done.entry
///     undo(baselines, {done.entry});
class Acceptance {
 public:
  using Pairs = std::vector<const PairRecord*>;

  /// An output's bytes come from the file if it is still what was compared, else from the evidence
  /// of `record` (null: there is none). `uses` (may be null) knows all pairs of the run. All
  /// arguments must outlive the object.
  Acceptance(Baselines& baselines, const RecordReader* record, const MasterUses* uses = nullptr);

  /// What would come of `accept`: the outcomes of the pairs, then of the outputs. Changes nothing.
  ChangeReport check(const Pairs& pairs, const std::vector<NewOutput>& outputs = {}) const;

  /// Accepts, as one entry of the journal, the pairs and outputs that nothing is in the way of: not
  /// a pair whose verdict is another than "differs", no output that is not valid in its own format,
  /// and nothing that is no longer what was compared. Raises `CommandError` before any master is
  /// touched if the journal cannot be written.
  ChangeReport accept(const Pairs& pairs, const std::vector<NewOutput>& outputs = {});

 private:
  struct Plan;
  Plan planFor(const Pairs& pairs, const std::vector<NewOutput>& outputs) const;
  ContentSource sourceFor(const Plan& plan) const;

  Baselines& m_baselines;
  const RecordReader* m_record;
  const MasterUses* m_uses;
};
