#include "cli/diff/KnownDifferences.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "cli/config/TomlValue.h"

namespace fs = std::filesystem;

namespace {

/// The verdicts of pairs that were compared to their end.
bool canBeKnown(Verdict verdict) {
  return verdict == Verdict::Differs || verdict == Verdict::Missing || verdict == Verdict::Failed ||
         verdict == Verdict::Stale;
}

/// Whether groups tell all there is to tell of a difference. Tables and trees have notes on what
/// has moved, which is in no group.
bool hasOnlyGroups(const Difference& difference) {
  const auto& changes = difference.changes;
  if (changes.empty() || changes.size() >= Difference::kMostChanges || difference.isCoarse) {
    return false;
  }
  const bool hasMoves = difference.kind == "csv" || difference.kind == "json";
  return !hasMoves || std::all_of(difference.notes.begin(), difference.notes.end(),
                                  [&changes](const std::string& note) {
                                    return changes.size() == 1 && changes.front().added == note;
                                  });
}

bool hasWildcards(const std::string& path) {
  return path.find_first_of("*?") != std::string::npos;
}

KnownReason reasonOf(const KnownDifference& known) {
  return {known.why, known.until, known.link, toText(known.definedAt)};
}

std::string describe(const KnownDifference& known) {
  std::string what = known.pair;
  for (const std::string& group : known.groups) {
    what += (what.empty() ? "" : ", ") + ("group " + group);
  }
  return toText(known.definedAt) + ": " + what + " (" + known.why + ')';
}

}  // namespace

KnownDifferences::KnownDifferences(std::vector<KnownDifference> known, std::string folder,
                                   const std::string& today)
    : m_folder(std::move(folder)) {
  for (KnownDifference& one : known) {
    const bool hasEnded = one.until < today;  // dates of this form are in the order of their texts
    m_entries.push_back({std::move(one), hasEnded});
  }
}

void KnownDifferences::judge(PairRecord& pair) {
  const bool passes = pair.verdict == Verdict::Passed;
  if (pair.master.empty() || !(passes || canBeKnown(pair.verdict))) {
    return;
  }
  const std::string path = pathOf(pair.master);
  std::vector<Entry*> named;
  for (Entry& entry : m_entries) {
    const KnownDifference& known = entry.known;
    if (known.pair.empty() || matchesWildcards(known.pair, path)) {
      named.push_back(&entry);
      entry.passes += passes ? 1 : 0;
    }
  }
  if (passes || named.empty()) {
    return;
  }
  for (Entry* const entry : named) {
    entry->others += 1;
  }
  const std::vector<Entry*> covering = coveringOf(pair, named, false);
  if (covering.empty()) {
    for (Entry* const entry : coveringOf(pair, named, true)) {
      entry->missed += entry->hasEnded ? 1 : 0;
    }
    return;
  }
  pair.known = KnownCause{pair.verdict, {}};
  pair.verdict = Verdict::Known;
  for (Entry* const entry : covering) {
    pair.known->reasons.push_back(reasonOf(entry->known));
    entry->uses += 1;
  }
}

/// The entries that together explain every change of the pair; none if they do not. `withEnded`:
/// what they would explain if none had ended.
std::vector<KnownDifferences::Entry*> KnownDifferences::coveringOf(const PairRecord& pair,
                                                                   const std::vector<Entry*>& named,
                                                                   bool withEnded) {
  std::set<std::string> groups;
  std::vector<Entry*> covering;
  for (Entry* const entry : named) {
    const KnownDifference& known = entry->known;
    const bool isItsVerdict = (known.verdict.empty() || known.verdict == wordFor(pair.verdict)) &&
                              (withEnded || !entry->hasEnded);
    if (isItsVerdict && known.groups.empty()) {
      return {entry};
    }
    const auto isOfPair = [&](const std::string& group) {
      const auto& changes = pair.difference->changes;
      return std::any_of(changes.begin(), changes.end(),
                         [&group](const DiffChange& change) { return change.group == group; });
    };
    if (isItsVerdict && pair.difference &&
        std::any_of(known.groups.begin(), known.groups.end(), isOfPair)) {
      groups.insert(known.groups.begin(), known.groups.end());
      covering.push_back(entry);
    }
  }
  const bool areAllKnown =
      !covering.empty() && hasOnlyGroups(*pair.difference) &&
      std::all_of(pair.difference->changes.begin(), pair.difference->changes.end(),
                  [&groups](const DiffChange& change) { return groups.count(change.group) > 0; });
  return areAllKnown ? covering : std::vector<Entry*>();
}

std::vector<std::string> KnownDifferences::remarks(bool isWholeRun) const {
  std::vector<std::string> sentences;
  for (const Entry& entry : m_entries) {
    const KnownUse use = entry.use();
    const bool isOnePair = !entry.known.pair.empty() && !hasWildcards(entry.known.pair);
    if (entry.missed > 0) {
      sentences.push_back(
          "known only until " + entry.known.until + ", so " + std::to_string(entry.missed) +
          (entry.missed == 1 ? " pair fails" : " pairs fail") + " again: " + use.what);
    } else if (!use.occurs && (isWholeRun || (isOnePair && use.applies))) {
      sentences.push_back(remarkOn(use));
    }
  }
  return sentences;
}

KnownUse KnownDifferences::Entry::use() const {
  return {describe(known), uses + others > 0, passes > 0 || known.pair.empty()};
}

std::vector<KnownUse> KnownDifferences::uses() const {
  std::vector<KnownUse> uses;
  for (const Entry& entry : m_entries) {
    uses.push_back(entry.use());
  }
  return uses;
}

/// The path of a master from the file's folder. Links on the way are resolved, once per folder.
std::string KnownDifferences::pathOf(const std::string& master) {
  const fs::path path(master);
  const auto [found, isNew] = m_folders.try_emplace(path.parent_path().native());
  if (isNew) {
    std::error_code error;
    const fs::path folder = fs::weakly_canonical(fs::absolute(path.parent_path(), error), error);
    found->second = folder.lexically_relative(m_folder).native();
  }
  return (fs::path(found->second) / path.filename()).lexically_normal().native();
}

bool matchesWildcards(const std::string& wildcards, const std::string& path) {
  // Wildcard by wildcard, the positions in the path that can be reached: no backtracking.
  std::vector<bool> reached(path.size() + 1, false);
  reached[0] = true;
  for (std::size_t i = 0; i < wildcards.size(); ++i) {
    const bool isFolders = wildcards.compare(i, 3, "**/") == 0;
    std::vector<bool> next(path.size() + 1, false);
    bool isOpen = false;
    for (std::size_t at = 0; at <= path.size(); ++at) {
      const bool isFolderStart = at > 0 && path[at - 1] == '/';
      if (isFolders) {
        next[at] = reached[at] || (isOpen && isFolderStart);
        isOpen = isOpen || reached[at];
      } else if (wildcards[i] == '*') {
        isOpen = (isOpen && !isFolderStart) || reached[at];
        next[at] = isOpen;
      } else if (reached[at] && at < path.size()) {
        next[at + 1] = wildcards[i] == path[at] || (wildcards[i] == '?' && path[at] != '/');
      }
    }
    i += isFolders ? 2 : 0;
    reached = std::move(next);
  }
  return reached[path.size()];
}
