#pragma once

#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "cli/baseline/Acceptance.h"
#include "cli/baseline/MasterChange.h"
#include "cli/record/Decision.h"
#include "cli/record/PairRecord.h"

/// By what the user chooses among the pairs of a run. What is empty does not restrict.
struct ChoiceRules {
  std::vector<std::string> groups;  ///< only pairs whose every change is of one of these
  bool hasList = false;             ///< only what `decisions` accept
  std::vector<Decision> decisions;
  std::vector<std::string> formats;
  std::vector<std::string> locations;  ///< reports, or folders of reports; absolute, without links
};

/// Chooses the pairs of a run that are to be accepted.
class PairChoice {
 public:
  /// `rules` must outlive the object.
  explicit PairChoice(const ChoiceRules& rules);

  /// Call it for every pair of the run. One that does not count for its report is never chosen.
  void add(const PairRecord& pair, bool countsForReport);

  /// Those that were chosen, in the order of the run.
  std::vector<const PairRecord*> pairs() const;

  /// What belongs to the choice and cannot be accepted as a whole, or at all.
  const std::vector<ChangeOutcome>& left() const { return m_left; }

  const MasterUses& uses() const { return m_uses; }

  /// Groups that no pair has shown.
  std::vector<std::string> unknownGroups() const;
  /// Decisions to accept that no pair belongs to.
  std::vector<const Decision*> unusedDecisions() const;

 private:
  bool isInScope(const PairRecord& pair);
  bool isOfGroups(const PairRecord& pair);
  bool isDecided(const PairRecord& pair);
  const std::string& realFolder(const std::string& folder);

  const ChoiceRules& m_rules;
  std::set<std::string> m_formats;
  std::map<std::string, bool> m_groups;                             ///< whether a pair has shown it
  std::map<std::string, std::vector<const Decision*>> m_decisions;  ///< to accept, by master
  std::set<const Decision*> m_used;
  std::map<std::string, std::string> m_realFolders;
  std::deque<PairRecord> m_pairs;  ///< without what only a reader of differences needs
  std::vector<ChangeOutcome> m_left;
  MasterUses m_uses;
};
