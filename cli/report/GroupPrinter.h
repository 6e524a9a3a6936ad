#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "cli/record/PairRecord.h"
#include "cli/report/ChangeGroups.h"
#include "cli/report/DifferencePrinter.h"
#include "cli/report/ResultPrinter.h"

/// Tells a person about the pairs of a run so that what many of them have in common is told once.
/// Pairs without a change come out at once; all others at the end, rarest change first:
///
///     differs  a.html -> out/a.html
///               ... what this pair alone shows
///     284 pairs, same change: `15.20` → `16.20` (group 7c1e90b2)
///               for example b.html -> out/b.html
///               ... one place
///               also c.html -> out/c.html
///
/// A pair with several changes is named by each of their groups; one whose every change has a group
/// is named nowhere else.
class GroupPrinter {
 public:
  static constexpr std::size_t kMostBytes = std::size_t{64} << 20;

  /// With `groups` off, every pair comes out at once. At most `mostBytes` (roughly) are kept until
  /// the end; what would be more comes out at once, too. `palette` must outlive the object.
  GroupPrinter(bool groups, Verbosity verbosity, const Palette& palette,
               const DifferenceView& view = {}, std::size_t mostBytes = kMostBytes);

  /// Call it for every pair, in the order of the run.
  void add(const PairRecord& pair);

  /// Prints what was kept. Called once, after the last pair, also when the run was interrupted.
  void finish() const;

 private:
  using Bundle = std::vector<const ChangeGroup*>;  ///< groups of the very same pairs

  bool keep(const PairRecord& pair);
  bool becomesExample(const PairRecord& pair, std::size_t number);
  void keepRecord(const PairRecord& pair, std::size_t number);
  bool isOwn(const std::string& group) const;
  bool hasOwn(const PairRecord& pair) const;
  void printOwn(PairRecord pair) const;
  void printShared(const Bundle& bundle) const;
  void printExample(const Bundle& bundle, const PairRecord& pair) const;
  void printOthers(const ChangeGroup& group, std::size_t example) const;
  void printCounts(std::size_t ownChanges) const;

  const Verbosity m_verbosity;
  const bool m_isOn;
  const ResultPrinter m_printer;
  const Palette& m_palette;
  const DifferencePrinter m_differences;
  const std::size_t m_mostBytes;
  std::size_t m_keptBytes = 0;
  std::size_t m_unkept = 0;  ///< pairs that came out at once for want of room
  ChangeGroups m_groups;
  std::size_t m_pairs = 0;                                   ///< in `m_groups`
  std::unordered_map<std::size_t, std::string> m_names;      ///< of pairs that groups name
  std::unordered_map<std::string, std::size_t> m_exampleOf;  ///< the first pair that can show it
  std::map<std::size_t, PairRecord>
      m_records;  ///< of pairs that show a change first, with no other hunks
};
