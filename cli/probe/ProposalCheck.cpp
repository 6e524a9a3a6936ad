#include "cli/probe/ProposalCheck.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "cli/probe/PlantedChanges.h"
#include "cli/probe/VaryingPlaces.h"
#include "orvdiff/compare/OrvOriginMap.h"

namespace {

/// Compares the runs as they are with the proposals, and leads back what still differs.
class Remainder {
 public:
  Remainder(const Proposals& proposals, const OrvPatternList& added, RunTexts& texts)
      : m_proposals(proposals), m_added(added), m_texts(texts), m_all(texts.patterns()) {
    m_all.insert(m_all.end(), added.begin(), added.end());
  }

  void find(ProposalCheck& check) {
    for (std::size_t file = 0; file < m_texts.fileCount(); ++file) {
      const std::vector<RunTexts::Text> texts = m_texts.of(file);
      bool differs = false;
      for (std::size_t run = 1; run < texts.size(); ++run) {
        if (texts[run] != texts[0] &&
            normalized(*texts[0], m_added) != normalized(*texts[run], m_added)) {
          differs = true;
          compare(file, run, check);
        }
      }
      check.differingFiles += differs ? 1 : 0;
    }
    markMoves(check.unexplained);
    std::stable_sort(
        check.unexplained.begin(), check.unexplained.end(),
        [](const Unexplained& a, const Unexplained& b) { return a.places > b.places; });
  }

 private:
  void compare(std::size_t file, std::size_t run, ProposalCheck& check) {
    const std::string original = m_texts.original(0, file);
    const std::string other = m_texts.original(run, file);
    const OrvOriginMap mapA(original, m_all);
    const std::string b = normalized(other, m_all);
    std::map<std::size_t, bool> seen;
    for (const VaryingPlace& place : findVaryingPlaces(mapA.text(), b)) {
      ++check.unexplainedPlaces;
      const std::string textA(mapA.text().substr(place.beginA, place.endA - place.beginA));
      const std::string textB = b.substr(place.beginB, place.endB - place.beginB);
      const auto [known, isNew] =
          m_index.emplace(declinedKey(textA, textB), check.unexplained.size());
      if (isNew) {
        const OrvOriginMap::Position at = mapA.position(mapA.originOf(place.beginA).begin);
        check.unexplained.push_back({textA, textB, run,
                                     m_texts.folders().files[file] + ':' + std::to_string(at.line) +
                                         ':' + std::to_string(at.column),
                                     0, 0, reasonFor(textA, textB)});
      }
      Unexplained& counted = check.unexplained[known->second];
      ++counted.places;
      counted.files += seen.emplace(known->second, true).second ? 1 : 0;
    }
  }

  /// What is gone at one place and new at another was moved.
  static void markMoves(std::vector<Unexplained>& all) {
    std::set<std::string> gone;
    for (const Unexplained& one : all) {
      if (one.textB.empty()) {
        gone.insert(one.textA);
      }
    }
    std::set<std::string> moved;
    for (const Unexplained& one : all) {
      if (one.textA.empty() && gone.count(one.textB) != 0) {
        moved.insert(one.textB);
      }
    }
    for (Unexplained& one : all) {
      if (moved.count(one.textA + one.textB) != 0) {
        one.declined.reason = "moved: the order differs, which a pattern cannot mend";
      }
    }
  }

  Declined reasonFor(const std::string& textA, const std::string& textB) const {
    const auto declined = m_proposals.declined.find(declinedKey(textA, textB));
    return declined != m_proposals.declined.end()
               ? declined->second
               : Declined{"something was added, removed or rewritten", ""};
  }

  const Proposals& m_proposals;
  const OrvPatternList& m_added;
  RunTexts& m_texts;
  OrvPatternList m_all;  ///< the format's, then the proposals
  std::map<std::string, std::size_t> m_index;
};

}  // namespace

ProposalCheck checkProposals(const Proposals& proposals, const PlacesByFile& places,
                             RunTexts& texts) {
  const ProposedPatterns patterns(proposals.patterns);
  ProposalCheck check;
  Remainder(proposals, patterns.list(), texts).find(check);
  plantChanges(patterns.list(), places, texts, check);
  return check;
}
