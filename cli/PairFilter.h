#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "orvdiff/registry/OrvDiffListener.h"

/// Hears every result first and hands it to the listeners of the run, in the order in which they
/// were added.
///
/// A report's masters are found by the beginning of their names, so the master Revenue_2.html
/// belongs to a report Revenue, and to Revenue_2 where there is one: both verify it. Each pair is
/// handed on once only, or one difference would look like two, and counts for the report with the
/// longer name: Revenue is not verified by Revenue_2's masters.
class PairFilter : public OrvDiffListener {
 public:
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

  /// Raises `Interrupted` behind a result when the user wants to stop.
  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResult& result) override;

 private:
  bool isFirstTime(const OrvDiffResult& result);

  std::vector<OrvDiffListener*> m_listeners;
  std::string_view m_stem;  ///< path of the current report without its extension
  std::string_view m_format;
  std::size_t m_countSinceStart = 0;
  std::unordered_set<std::string_view> m_claimedStems;
  std::unordered_map<std::string, std::string_view> m_stemOfPair;
};
