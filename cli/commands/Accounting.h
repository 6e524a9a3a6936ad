#pragma once

#include <set>
#include <string>
#include <vector>

#include "cli/commands/RunPlan.h"
#include "cli/commands/VerifyOptions.h"
#include "cli/record/PairResult.h"
#include "cli/report/ClosingSummary.h"
#include "cli/suite/Finding.h"
#include "cli/suite/PairLedger.h"
#include "cli/suite/SharedPictures.h"

/// Keeps account of what a run compares, so that it can say what it did not.
class Accounting {
 public:
  /// The findings that are trouble, of what a user gave as --strict: "all", or keys separated by
  /// commas. Raises `CommandError` for another word.
  static std::set<FindingKind> strictKinds(const std::string& keys);

  /// Hears of every pair of the run.
  void note(const PairResult& pair);

  /// Takes stock at the end of a run that was not interrupted, and completes its totals.
  void close(const VerifyOptions& options, const RunPlan& plan,
             const std::vector<SelectedFormat>& formats, const SharedPictures& pictures,
             RunTotals& totals);

 private:
  void addInventory(const VerifyOptions& options, const RunPlan& plan,
                    const std::vector<SelectedFormat>& formats, const SharedPictures& pictures,
                    RunTotals& totals);

  void requireSubFolders(const std::vector<std::string>& subFolders, RunTotals& totals) const;

  PairLedger m_compared;
  std::set<std::string> m_subFolders;  ///< of pairs
  FindingTally m_findings;
};

/// What to say when findings of these kinds are trouble; empty if there are none.
std::string strictProblem(const std::vector<FindingTotal>& findings,
                          const std::set<FindingKind>& strict);
