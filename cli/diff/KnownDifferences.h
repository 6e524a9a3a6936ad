#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "cli/custom/KnownDifference.h"
#include "cli/record/PairRecord.h"
#include "cli/record/RunRecord.h"

/// Finds out which pairs of a run differ only in what is known.
class KnownDifferences {
 public:
  /// `folder` is that of the file, absolute and without links; wildcards start there. What ended
  /// before `today` ("2027-01-31") covers nothing.
  KnownDifferences(std::vector<KnownDifference> known, std::string folder,
                   const std::string& today);

  bool isEmpty() const { return m_entries.empty(); }

  /// Call it for every pair. One whose every change is known gets the verdict `Known` and says why.
  /// A pair that was not compared to its
  /// end is never known.
  void judge(PairRecord& pair);

  /// What to do about the list, a sentence each: what does not occur any more, names no pair, or
  /// has ended. `isWholeRun`: the run has compared all of the suite; else only those can be told
  /// whose one pair was compared.
  std::vector<std::string> remarks(bool isWholeRun) const;

  /// What a run over a part of a suite can tell of each difference, for those that join the parts.
  std::vector<KnownUse> uses() const;

 private:
  struct Entry {
    KnownDifference known;
    bool hasEnded = false;
    std::size_t uses = 0;    ///< pairs that it made known
    std::size_t passes = 0;  ///< pairs it names that pass
    std::size_t others = 0;  ///< pairs it names that do not pass
    std::size_t missed = 0;  ///< pairs it would have made known if it had not ended

    KnownUse use() const;
  };

  static std::vector<Entry*> coveringOf(const PairRecord& pair, const std::vector<Entry*>& named,
                                        bool withEnded);
  std::string pathOf(const std::string& master);

  std::vector<Entry> m_entries;
  const std::string m_folder;
  std::unordered_map<std::string, std::string> m_folders;  ///< without links, by name
};

/// Whether a path matches wildcards: "*" and "?" stand for what is within one folder, "**/" for any
/// number of folders, everything else for itself.
bool matchesWildcards(const std::string& wildcards, const std::string& path);
