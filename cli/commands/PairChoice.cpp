#include "cli/commands/PairChoice.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace {

using Kind = ChangeOutcome::Kind;

bool isSetAndOther(const std::string& decided, const std::string& now) {
  return !decided.empty() && decided != now;
}

}  // namespace

PairChoice::PairChoice(const ChoiceRules& rules)
    : m_rules(rules), m_formats(rules.formats.begin(), rules.formats.end()) {
  for (const std::string& group : rules.groups) {
    m_groups[group] = false;
  }
  for (const Decision& decision : rules.decisions) {
    if (decision.fix == Decision::Fix::Accept && decision.kind != keyOf(FindingKind::Output)) {
      m_decisions[decision.path].push_back(&decision);
    }
  }
}

void PairChoice::add(const PairRecord& pair, bool countsForReport) {
  m_uses.add(pair);
  // What is known stays as it is until somebody names it.
  const bool isNamed = m_rules.hasList || !m_groups.empty();
  if (!countsForReport || pair.master.empty() || !isInScope(pair) || !isDecided(pair) ||
      !isOfGroups(pair) || (pair.verdict == Verdict::Passed && !m_rules.hasList) ||
      (pair.verdict == Verdict::Known && !isNamed)) {
    return;
  }
  m_pairs.push_back(pair);
  m_pairs.back().difference.reset();
  m_pairs.back().printed.clear();
}

std::vector<const PairRecord*> PairChoice::pairs() const {
  std::vector<const PairRecord*> pairs;
  for (const PairRecord& pair : m_pairs) {
    pairs.push_back(&pair);
  }
  return pairs;
}

bool PairChoice::isInScope(const PairRecord& pair) {
  if (!m_formats.empty() && m_formats.count(pair.format) == 0) {
    return false;
  }
  if (m_rules.locations.empty()) {
    return true;
  }
  const std::size_t name = pair.report.rfind('/') + 1;
  const std::string report =
      realFolder(pair.report.substr(0, name)) + '/' + pair.report.substr(name);
  return std::any_of(m_rules.locations.begin(), m_rules.locations.end(),
                     [&report](const std::string& location) {
                       return report == location ||
                              (report.size() > location.size() && report[location.size()] == '/' &&
                               report.compare(0, location.size(), location) == 0);
                     });
}

const std::string& PairChoice::realFolder(const std::string& folder) {
  const auto [place, isNew] = m_realFolders.try_emplace(folder);
  if (isNew) {
    std::error_code gone;
    place->second = std::filesystem::weakly_canonical(folder.empty() ? "." : folder, gone).string();
    if (!place->second.empty() && place->second.back() == '/') {
      place->second.pop_back();
    }
  }
  return place->second;
}

/// A pair that shows other changes, too, is left: nobody has decided on those.
bool PairChoice::isOfGroups(const PairRecord& pair) {
  if (m_groups.empty()) {
    return true;
  }
  if (!pair.difference) {
    return false;
  }
  std::size_t chosen = 0;
  const DiffChange* other = nullptr;
  for (const DiffChange& change : pair.difference->changes) {
    const auto group = m_groups.find(change.group);
    if (group != m_groups.end()) {
      group->second = true;
      ++chosen;
    } else {
      other = other != nullptr ? other : &change;
    }
  }
  const bool mayHaveMore = pair.difference->changes.size() == Difference::kMostChanges;
  if (chosen > 0 && (other != nullptr || mayHaveMore)) {
    m_left.push_back({Kind::Refused, pair.master,
                      "it shows changes of other groups, too" +
                          (other != nullptr ? ", such as " + other->group : std::string())});
  }
  return chosen > 0 && other == nullptr && !mayHaveMore;
}

/// A decision holds for the files that it was made on, and for no others.
bool PairChoice::isDecided(const PairRecord& pair) {
  if (!m_rules.hasList) {
    return true;
  }
  const auto found = m_decisions.find(pair.master);
  if (found == m_decisions.end()) {
    return false;
  }
  for (const Decision* const decision : found->second) {
    if (isSetAndOther(decision->format, pair.format)) {
      continue;
    }
    m_used.insert(decision);
    if (!decision->outputHash.empty() && pair.masterFile.hash == decision->outputHash) {
      m_left.push_back({Kind::AlreadySo, pair.master, "it is so already"});
      return false;
    }
    if (isSetAndOther(decision->masterHash, pair.masterFile.hash) ||
        isSetAndOther(decision->outputHash, pair.outputFile.hash)) {
      m_left.push_back({Kind::Refused, pair.master,
                        "it was decided on other files: the master or the output has changed"});
      return false;
    }
    return true;
  }
  return false;
}

std::vector<std::string> PairChoice::unknownGroups() const {
  std::vector<std::string> unknown;
  for (const auto& [group, isShown] : m_groups) {
    if (!isShown) {
      unknown.push_back(group);
    }
  }
  return unknown;
}

std::vector<const Decision*> PairChoice::unusedDecisions() const {
  std::vector<const Decision*> unused;
  for (const auto& [master, decisions] : m_decisions) {
    for (const Decision* const decision : decisions) {
      if (m_used.count(decision) == 0) {
        unused.push_back(decision);
      }
    }
  }
  return unused;
}
