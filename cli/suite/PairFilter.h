#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "orvdiff/registry/OrvDiffListener.h"

/// What tells the pair with this master apart from all others. Two reports of one name in different
/// folders share their outputs, and an XML output that fails goes by its own name for the master's.
std::string identityOf(std::string_view stem, std::string_view format, std::string_view master);

/// Hears every result first and hands it to the listeners of the run, in the order in which they
/// were added.
///
/// A report's masters are found by the beginning of their names, so the master Revenue_2.html
/// belongs to a report Revenue, and to Revenue_2 where there is one: both verify it. Each pair is
/// handed on once only, or one difference would look like two, and counts for the report with the
/// longer name, which is verified first: Revenue is not verified by Revenue_2's masters.
class PairFilter : public OrvDiffListener {
 public:
  /// `neighbours` are paths of reports that are not verified themselves, and have masters of their
  /// own.
  explicit PairFilter(const std::vector<std::string>& neighbours);

  /// `listener` must outlive the filter's use.
  void add(OrvDiffListener& listener) { m_listeners.push_back(&listener); }

  /// What follows comes from this report and format; both texts must outlive the filter.
  void startReport(std::string_view report, std::string_view format);

  /// How many pairs were compared since `startReport`, repeated ones included.
  std::size_t countSinceStart() const { return m_countSinceStart; }

  /// The report that was started last has masters, even if no result says so.
  void claimMasters() { m_claimedStems.insert(m_stem); }

  /// Those of `reports` that no pair belongs to, in their order.
  std::vector<std::string> unverifiedAmong(const std::vector<std::string>& reports) const;

  /// Raises `Interrupted` behind a result when the user wants to stop. A result that is no pass is
  /// then not handed on: a script that compares is stopped by the same Ctrl-C, and fails.
  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResult& result) override;

 private:
  bool isFirstTime(const OrvDiffResult& result);
  std::string_view ownerOf(const std::string& master) const;

  std::vector<std::string> m_neighbours;  ///< stems, sorted
  std::vector<OrvDiffListener*> m_listeners;
  std::string_view m_stem;  ///< of the current report
  std::string_view m_format;
  std::size_t m_countSinceStart = 0;
  std::unordered_set<std::string_view> m_claimedStems;
  std::unordered_map<std::string, std::string_view> m_stemOfPair;
};
