#include "cli/diff/MaskAlignment.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <unordered_map>

#include "cli/diff/SequenceDiff.h"

namespace {

using Mask = OrvOriginMap::Mask;

/// Gives equal ids to masks that may be each other's.
class MaskIds {
 public:
  std::vector<std::uint32_t> idsOf(const OrvOriginMap& map) {
    std::vector<std::uint32_t> ids;
    ids.reserve(map.masks().size());
    for (const Mask& mask : map.masks()) {
      const auto next = static_cast<std::uint32_t>(m_ids.size());
      ids.push_back(m_ids.emplace(hashOf(map, mask), next).first->second);
    }
    return ids;
  }

 private:
  /// Of the rule and the normalised text around. Should two hashes ever be equal by accident, the
  /// wrong masks may be paired.
  static std::size_t hashOf(const OrvOriginMap& map, const Mask& mask) {
    constexpr std::size_t kContext = 24;
    const std::size_t begin = mask.textBegin - std::min(kContext, mask.textBegin);
    const std::hash<std::string_view> hash;
    const std::size_t before = hash(map.text().substr(begin, mask.textBegin - begin));
    const std::size_t after = hash(map.text().substr(mask.textEnd, kContext));
    return (before * 31 + after) * 31 + mask.rule;
  }

  std::unordered_map<std::size_t, std::uint32_t> m_ids;
};

class Aligner {
 public:
  Aligner(const std::vector<Mask>& master, const std::vector<Mask>& output)
      : m_master(master), m_output(output) {}

  /// The next masks, up to these indices, are each other's.
  void takeEqual(std::size_t masterEnd) {
    for (; m_masterDone < masterEnd; ++m_masterDone, ++m_outputDone) {
      m_pairs.push_back({&m_master[m_masterDone], &m_output[m_outputDone]});
    }
  }

  /// The next masks, up to these indices, stand in texts that differ.
  void takeDifferent(std::size_t masterEnd, std::size_t outputEnd) {
    std::map<std::size_t, std::deque<const Mask*>> byRule;
    for (; m_outputDone < outputEnd; ++m_outputDone) {
      byRule[m_output[m_outputDone].rule].push_back(&m_output[m_outputDone]);
    }
    for (; m_masterDone < masterEnd; ++m_masterDone) {
      std::deque<const Mask*>& candidates = byRule[m_master[m_masterDone].rule];
      m_pairs.push_back({&m_master[m_masterDone], candidates.empty() ? nullptr : candidates[0]});
      if (!candidates.empty()) {
        candidates.pop_front();
      }
    }
    for (const auto& [rule, masks] : byRule) {
      for (const Mask* const mask : masks) {
        m_pairs.push_back({nullptr, mask});
      }
    }
  }

  std::vector<MaskPair> takePairs() { return std::move(m_pairs); }

 private:
  const std::vector<Mask>& m_master;
  const std::vector<Mask>& m_output;
  std::size_t m_masterDone = 0;
  std::size_t m_outputDone = 0;
  std::vector<MaskPair> m_pairs;
};

}  // namespace

MaskAlignment alignMasks(const OrvOriginMap& master, const OrvOriginMap& output) {
  MaskIds ids;
  const std::vector<std::uint32_t> masterIds = ids.idsOf(master);
  WorkBudget budget;
  const SequenceDiff diff = diffSequences(masterIds, ids.idsOf(output), budget);
  Aligner aligner(master.masks(), output.masks());
  for (const SequenceEdit& edit : diff.edits) {
    aligner.takeEqual(edit.beginA);
    aligner.takeDifferent(edit.endA, edit.endB);
  }
  aligner.takeEqual(masterIds.size());
  return {aligner.takePairs(), diff.isCoarse};
}

std::string_view hiddenText(const OrvOriginMap& map, const OrvOriginMap::Mask* mask) {
  return mask != nullptr ? map.original().substr(mask->begin, mask->end - mask->begin)
                         : std::string_view();
}

std::optional<HiddenDifference> findHiddenDifference(const OrvOriginMap& master,
                                                     const OrvOriginMap& output,
                                                     const MaskPair& pair) {
  if (pair.master == nullptr || pair.output == nullptr) {
    return HiddenDifference{0, 0};
  }
  const std::string_view left = hiddenText(master, pair.master);
  const std::string_view right = hiddenText(output, pair.output);
  const auto skipReturns = [](std::string_view text, std::size_t at) {
    return std::min(text.find_first_not_of('\r', at), text.size());
  };
  HiddenDifference at = {skipReturns(left, 0), skipReturns(right, 0)};
  while (at.inMaster < left.size() && at.inOutput < right.size() &&
         left[at.inMaster] == right[at.inOutput]) {
    at = {skipReturns(left, at.inMaster + 1), skipReturns(right, at.inOutput + 1)};
  }
  return at.inMaster == left.size() && at.inOutput == right.size() ? std::nullopt
                                                                   : std::optional(at);
}
