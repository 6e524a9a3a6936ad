#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

/// What a run has to account for besides the verdicts of its pairs.
enum class FindingKind : std::uint8_t {
  SubFolder,   ///< a master in a sub-folder that was not selected
  Format,      ///< a master of a format that was not selected
  Suffix,      ///< a master that another suffix would select
  Case,        ///< a name that would be read if it were not for upper and lower case, or its form
               ///< of Unicode
  Unknown,     ///< a file among masters that no format reads
  Orphan,      ///< a master of no report
  Claim,       ///< a master that several reports find by the beginning of its name
  Unread,      ///< a master that should have been compared and was not
  Output,      ///< an output without a master
  Shared,      ///< an output that is compared for several reports of the same name
  Leftover,    ///< a text that an earlier run saved for a pair that passes now
  Picture,     ///< a picture that was compared in another format only
  Vacuous,     ///< a pass of files with nothing to compare
  Mask,        ///< a pass that rests on outsized masks
  Stale,       ///< an output older than the run it should come from
  Partly,      ///< a pair that was compared only up to a NUL byte
  Unverified,  ///< a report without a master in any selected format
  Unreadable,  ///< a folder that cannot be read; of a run, an error in any case
  // What only an audit finds, by looking into the masters.
  Empty,
  Large,      ///< too large to be compared
  Invalid,    ///< not valid in its own format
  Identical,  ///< the same bytes as a master of another report
  Pattern,    ///< a normalisation that changes no master
};

/// The word for a kind on a command line and in records: "orphans".
std::string_view keyOf(FindingKind kind);

/// The kind of a word, or nothing for another word.
std::optional<FindingKind> kindFor(std::string_view key);

/// All kinds that a run accounts for, in the order in which they are told.
const std::vector<FindingKind>& kindsOfRuns();

/// One thing to account for.
struct Finding {
  FindingKind kind;
  std::string path;    ///< of the file, folder or report
  std::string detail;  ///< the sub-folder, format or suffix it belongs to, or what clashes with it
};

using FindingSink = std::function<void(const Finding&)>;

/// All findings of one kind in few words, however many there are.
struct FindingTotal {
  FindingKind kind = FindingKind::Unknown;
  std::uint64_t count = 0;
  Finding example{};              ///< the first by path
  std::set<std::string> details;  ///< the first ones, `kMostDetails` at most

  static constexpr std::size_t kMostDetails = 8;
};

/// Counts findings by kind. The result does not depend on the order in which they come.
class FindingTally {
 public:
  void add(const Finding& finding);

  /// The totals of another tally of the same suite, none of whose findings are in this one.
  void add(const FindingTotal& total);

  /// Those that occur, in the order of the kinds.
  std::vector<FindingTotal> totals() const;

 private:
  std::map<FindingKind, FindingTotal> m_totals;
};
