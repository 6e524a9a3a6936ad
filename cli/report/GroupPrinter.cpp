#include "cli/report/GroupPrinter.h"

#include <algorithm>
#include <iostream>
#include <limits>
#include <unordered_set>
#include <utility>

#include "cli/report/GroupText.h"
#include "cli/terminal/Printable.h"

namespace {

constexpr const char* kIndent = "          ";
constexpr std::size_t kNamedPairs = 3;

std::size_t bytesOf(const PairRecord& pair) {
  constexpr std::size_t kPerPart = 128;  // about what an object needs besides its text
  std::size_t bytes = sizeof pair + pair.printed.size() + pair.message.size();
  for (const DiffHunk& hunk : pair.difference->hunks) {
    for (const DiffLine& line : hunk.lines) {
      bytes += kPerPart;
      for (const DiffSpan& span : line.spans) {
        bytes += kPerPart + span.text.size();
      }
    }
  }
  for (const DiffChange& change : pair.difference->changes) {
    bytes += 4 * kPerPart + 2 * (change.removed.size() + change.added.size());
  }
  return bytes;
}

template <typename IsWanted>
void keepHunks(std::vector<DiffHunk>& hunks, const IsWanted& isWanted) {
  const auto isUnwanted = [&isWanted](const DiffHunk& hunk) {
    return std::none_of(hunk.groups.begin(), hunk.groups.end(), isWanted);
  };
  hunks.erase(std::remove_if(hunks.begin(), hunks.end(), isUnwanted), hunks.end());
}

/// Leaves the hunks with a change that `isWanted`, and counts the places of such changes only.
template <typename IsWanted>
void leaveOnly(const IsWanted& isWanted, Difference& difference) {
  auto& hunks = difference.hunks;
  keepHunks(hunks, isWanted);
  std::uint64_t places = 0;
  for (const DiffChange& change : difference.changes) {
    places += isWanted(change.group) ? change.count : 0;
  }
  for (const DiffHunk& hunk : hunks) {
    places -=
        static_cast<std::uint64_t>(std::count_if(hunk.groups.begin(), hunk.groups.end(), isWanted));
  }
  difference.hunkCount = hunks.size() + places;
}

}  // namespace

GroupPrinter::GroupPrinter(bool groups, Verbosity verbosity, const Palette& palette,
                           const DifferenceView& view, std::size_t mostBytes)
    : m_verbosity(verbosity),
      m_isOn(groups && verbosity != Verbosity::Quiet),
      m_printer(verbosity, palette, view),
      m_palette(palette),
      m_differences(view, palette),
      m_mostBytes(mostBytes),
      m_groups(verbosity == Verbosity::Verbose ? std::numeric_limits<std::size_t>::max()
                                               : kNamedPairs) {}

void GroupPrinter::add(const PairRecord& pair) {
  const bool hasChange = pair.difference && !pair.difference->changes.empty();
  if (!m_isOn || !hasChange || pair.verdict == Verdict::Known) {
    m_printer.print(pair);
  } else if (!keep(pair)) {
    m_printer.print(pair);
    ++m_unkept;
  }
}

/// Whether there is room for what only this pair has shown so far.
bool GroupPrinter::keep(const PairRecord& pair) {
  const auto& changes = pair.difference->changes;
  const auto isUnknown = [this](const DiffChange& change) {
    return m_groups.find(change.group) == nullptr;
  };
  const bool isNew =
      hasUnlistedChanges(pair) || std::any_of(changes.begin(), changes.end(), isUnknown);
  const bool hasRoom = m_keptBytes < m_mostBytes;
  if (isNew && !hasRoom) {
    return false;
  }
  m_groups.add(pair);
  const std::size_t number = m_pairs++;
  const auto namesIt = [&](const DiffChange& change) {
    return m_groups.find(change.group)->pairs.back() == number;
  };
  if (std::any_of(changes.begin(), changes.end(), namesIt)) {
    m_names[number] = pairNameOf(pair);
  }
  if (hasRoom && (becomesExample(pair, number) || isNew)) {
    keepRecord(pair, number);
  }
  return true;
}

/// Takes the pair as the example of all groups that no pair before could show a place of.
bool GroupPrinter::becomesExample(const PairRecord& pair, std::size_t number) {
  bool isExample = false;
  for (const DiffHunk& hunk : pair.difference->hunks) {
    for (const std::string& group : hunk.groups) {
      isExample = m_exampleOf.try_emplace(group, number).second || isExample;
    }
  }
  return isExample;
}

void GroupPrinter::keepRecord(const PairRecord& pair, std::size_t number) {
  PairRecord& record = m_records[number] = pair;
  if (!hasUnlistedChanges(pair)) {
    keepHunks(record.difference->hunks,
              [&](const std::string& group) { return m_exampleOf.at(group) == number; });
  }
  m_keptBytes += bytesOf(record);
}

bool GroupPrinter::isOwn(const std::string& group) const {
  const ChangeGroup* const found = m_groups.find(group);
  return found == nullptr || found->pairCount == 1;
}

bool GroupPrinter::hasOwn(const PairRecord& pair) const {
  const auto& changes = pair.difference->changes;
  return hasUnlistedChanges(pair) ||
         std::any_of(changes.begin(), changes.end(),
                     [this](const DiffChange& change) { return isOwn(change.group); });
}

void GroupPrinter::finish() const {
  const std::vector<ChangeGroup> groups = m_groups.rarestFirst();
  std::unordered_set<std::size_t> printed;
  const auto printOnce = [&](std::size_t number) {
    if (printed.insert(number).second) {
      printOwn(m_records.at(number));
    }
  };
  auto group = groups.begin();
  for (; group != groups.end() && group->pairCount == 1; ++group) {
    printOnce(group->pairs.front());
  }
  for (const auto& [number, record] : m_records) {
    if (hasOwn(record)) {
      printOnce(number);
    }
  }
  const auto ownChanges = static_cast<std::size_t>(group - groups.begin());
  std::vector<Bundle> bundles;
  std::map<std::pair<std::size_t, std::uint64_t>, std::size_t> bundleOf;
  for (; group != groups.end(); ++group) {
    const auto [found, isNew] =
        bundleOf.try_emplace({group->pairCount, group->pairsHash}, bundles.size());
    if (isNew) {
      bundles.emplace_back();
    }
    bundles[found->second].push_back(&*group);
  }
  for (const Bundle& bundle : bundles) {
    printShared(bundle);
  }
  printCounts(ownChanges);
}

/// Prints a pair without what it has in common with others, whose groups are named instead.
void GroupPrinter::printOwn(PairRecord pair) const {
  std::vector<std::string> shared;
  for (const DiffChange& change : pair.difference->changes) {
    if (!isOwn(change.group)) {
      shared.push_back(change.group);
    }
  }
  if (!shared.empty() && !hasUnlistedChanges(pair)) {
    leaveOnly([this](const std::string& id) { return isOwn(id); }, *pair.difference);
  }
  m_printer.print(pair);
  if (!shared.empty()) {
    constexpr std::size_t kMostNamed = 5;
    std::cout << kIndent << "and " << countOf(shared.size(), "change")
              << " that other pairs show, too: group" << (shared.size() == 1 ? "" : "s");
    for (std::size_t i = 0; i < std::min(shared.size(), kMostNamed); ++i) {
      std::cout << (i == 0 ? " " : ", ") << shared[i];
    }
    std::cout << (shared.size() > kMostNamed ? ", ..." : "") << '\n';
  }
}

void GroupPrinter::printShared(const Bundle& bundle) const {
  constexpr std::size_t kMostChanges = 10;
  const ChangeGroup& first = *bundle.front();
  const Color color = first.kind == "missing" ? Color::Yellow : Color::Red;
  const std::size_t shown =
      m_verbosity == Verbosity::Verbose ? bundle.size() : std::min(kMostChanges, bundle.size());
  std::cout << m_palette.paint(color, countOf(first.pairCount, "pair")) << ", " << wordsFor(first);
  for (std::size_t i = 0; i < shown; ++i) {
    std::cout << (i == 0 ? "" : "          and ") << textOf(*bundle[i]) << " (group "
              << bundle[i]->id << ")\n";
  }
  if (shown < bundle.size()) {
    std::cout << kIndent << "... and " << countOf(bundle.size() - shown, "more change")
              << " (-v lists all)\n";
  }
  const auto known = m_exampleOf.find(first.id);
  const std::size_t example = known != m_exampleOf.end() ? known->second : first.pairs.front();
  printExample(bundle, m_records.at(example));
  printOthers(first, example);
}

/// Prints one of the pairs, with the first place of each change.
void GroupPrinter::printExample(const Bundle& bundle, const PairRecord& pair) const {
  std::cout << kIndent << "for example " << printable(pairNameOf(pair)) << '\n';
  std::vector<const DiffHunk*> shown;
  for (const ChangeGroup* const group : bundle) {
    const auto showsIt = [group](const auto& hunk) { return hasGroup(hunk, group->id); };
    const auto& hunks = pair.difference->hunks;
    const auto hunk = std::find_if(hunks.begin(), hunks.end(), showsIt);
    const bool isShown = std::any_of(shown.begin(), shown.end(),
                                     [&](const DiffHunk* other) { return showsIt(*other); });
    if (hunk != hunks.end() && !isShown) {
      shown.push_back(&*hunk);
    }
  }
  Difference places;
  places.hunkCount = shown.size();
  for (const DiffHunk* const hunk : shown) {
    places.hunks.push_back(*hunk);
  }
  m_differences.print(places, std::cout);
}

void GroupPrinter::printOthers(const ChangeGroup& group, std::size_t example) const {
  std::size_t named = 1;
  for (const std::size_t number : group.pairs) {
    if (number != example) {
      std::cout << kIndent << (named == 1 ? "also " : "     ") << printable(m_names.at(number))
                << '\n';
      ++named;
    }
  }
  if (named < group.pairCount) {
    std::cout << kIndent << "... and " << group.pairCount - named << " more (-v lists all)\n";
  }
}

void GroupPrinter::printCounts(std::size_t ownChanges) const {
  if (m_unkept > 0) {
    std::cout
        << countOf(m_unkept, "pair")
        << " printed in the order of the run: there are too many different changes to group\n";
  }
  if (m_groups.size() > ownChanges) {
    std::cout << countOf(m_groups.size(), "different change") << " in " << countOf(m_pairs, "pair");
    if (ownChanges > 0) {
      std::cout << "; " << ownChanges << " of them " << (ownChanges == 1 ? "" : "each ")
                << "in a single pair";
    }
    std::cout << '\n';
  }
}
