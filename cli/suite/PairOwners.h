#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class OrvDiffFileEngine;

/// The path of a report without its extension.
std::string_view stemOf(std::string_view report);

/// Says which report a pair counts for.
///
/// A report's masters are found by the beginning of their names, so Revenue_2.html is a master of
/// the report Revenue, and of Revenue_2 where there is one. It belongs to the one with the longest
/// name that finds it; of several reports of that name, to the first.
class PairOwners {
 public:
  /// `reports` are those of the suite, sorted; `neighbours` are others that are not to be verified,
  /// but have masters of their own. Both must outlive the object.
  PairOwners(const std::vector<std::string>& reports, const std::vector<std::string>& neighbours);

  enum class Owner {
    Itself,
    Neighbour,  ///< a report that nobody verifies
    Other       ///< another report of the suite, which verifies the pair
  };

  /// Whose `master` is, which `engine` found for `report`, one of the suite's.
  Owner ownerOf(const std::string& report, const std::string& master,
                const OrvDiffFileEngine& engine) const;

 private:
  using Reports = std::vector<std::string>;

  const std::string* longestName(const Reports& candidates, const std::string& report,
                                 const std::string& master, std::size_t atLeast,
                                 const OrvDiffFileEngine& engine) const;

  const Reports& m_reports;
  Reports m_neighbours;  ///< sorted
};
