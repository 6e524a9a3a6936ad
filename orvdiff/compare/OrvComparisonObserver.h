#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "orvdiff/orvdiff_export.h"

class OrvDiffNormalizationPattern;

/// Told what a comparison of two files reads and does, so that a record can describe the very bytes
/// that were compared without reading them again. Exported for the orvdiff program; not part of the
/// public interface, so this header is not installed.
///
/// Comparisons by bytes, as text and of VMD statistics are observed, outputs in memory and scripts
/// are not; engines outside the library tell the observer themselves. What is passed is valid
/// during the call. An exception ends the comparison.
class ORVDIFF_API OrvComparisonObserver {
 public:
  /// How much of a text was matched by patterns, whatever took the place of the matches.
  struct MatchSizes {
    std::size_t textLength = 0;  ///< before anything was removed
    std::size_t matched = 0;     ///< bytes in all matches; more than the text if chains match again
    std::size_t longMatches = 0;    ///< matches longer than `longestUsualMatch`
    std::size_t longMatchHash = 0;  ///< of all of these
  };

  virtual ~OrvComparisonObserver();

  /// The next block of both files, which are equal up to its end.
  virtual void sawEqualBlock(std::string_view block) = 0;

  /// The blocks until now are all of both files.
  virtual void sawEqualFiles() = 0;

  /// The files, as they were read to their ends. Takes the place of blocks seen before.
  virtual void sawFiles(std::string_view master, std::string_view actual) = 0;

  /// `pattern` changed one of the texts; null stands for the removal of carriage returns.
  virtual void sawChangeBy(const OrvDiffNormalizationPattern* pattern) = 0;

  /// The normalised texts, about to be compared.
  virtual void sawNormalized(std::string_view master, std::string_view actual) = 0;

  /// Matches longer than this, in a text of `textLength` bytes, count as long. Asked before the
  /// patterns are applied.
  virtual std::size_t longestUsualMatch(std::size_t textLength) const;

  /// All patterns have been applied to both texts.
  virtual void sawMatches(const MatchSizes& master, const MatchSizes& actual);

  /// Something other than a pattern, called `name`, is why files of different bytes are equal. Said
  /// of comparisons that pass, once for each rule.
  virtual void sawHelpOf(std::string_view name);

  /// Who observes the comparisons of this process; null, as at the start, for nobody.
  static OrvComparisonObserver* current();
  static void setCurrent(OrvComparisonObserver* observer);
};
