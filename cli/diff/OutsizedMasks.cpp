#include "cli/diff/OutsizedMasks.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>

#include "cli/diff/MaskAlignment.h"

namespace {

using Mask = OrvOriginMap::Mask;

std::size_t lengthOf(const Mask& mask) {
  return mask.end - mask.begin;
}

/// The masks of one file that hide a difference.
class HidingMasks {
 public:
  HidingMasks(const OrvOriginMap& map, bool isOutput) : m_map(map), m_isOutput(isOutput) {}

  void add(const Mask* mask) {
    if (mask == nullptr) {
      return;
    }
    m_sum += lengthOf(*mask);
    m_begin = std::min(m_begin, mask->begin);
    m_end = std::max(m_end, mask->end);
    if (m_largest == nullptr || lengthOf(*mask) > lengthOf(*m_largest)) {
      m_largest = mask;
    }
  }

  OutsizedMask largest() const {
    return m_largest != nullptr ? describe(m_map.rules()[m_largest->rule].name,
                                           lengthOf(*m_largest), m_largest->begin, m_largest->end)
                                : OutsizedMask();
  }

  OutsizedMask sum() const {
    return m_sum > 0 ? describe({}, m_sum, m_begin, m_end) : OutsizedMask();
  }

 private:
  OutsizedMask describe(const std::string& rule, std::size_t bytes, std::size_t begin,
                        std::size_t end) const {
    const std::size_t length = m_map.original().size();
    OutsizedMask mask;
    mask.isInOutput = m_isOutput;
    mask.rule = rule;
    mask.bytes = bytes;
    if (length > kLongestSmallFile) {
      mask.percent = 100.0 * static_cast<double>(bytes) / static_cast<double>(length);
    }
    mask.firstLine = m_map.position(begin).line;
    mask.lastLine = m_map.position(std::max(begin + 1, end) - 1).line;
    return mask;
  }

  const OrvOriginMap& m_map;
  const bool m_isOutput;
  const Mask* m_largest = nullptr;
  std::size_t m_sum = 0;
  std::size_t m_begin = std::string_view::npos;
  std::size_t m_end = 0;
};

bool isLess(const OutsizedMask& left, const OutsizedMask& right) {
  return left.percent < right.percent;
}

bool isBeyond(const OutsizedMask& mask, double limit) {
  return limit > 0 && mask.percent > limit;
}

/// With the one digit that people and records see.
OutsizedMask rounded(OutsizedMask mask) {
  mask.percent = std::round(mask.percent * 10) / 10;
  return mask;
}

}  // namespace

std::optional<OutsizedMask> findOutsizedMask(std::string_view master, std::string_view output,
                                             const OrvPatternList& patterns,
                                             const MaskLimits& limits) {
  const OrvOriginMap masterMap(master, patterns);
  const OrvOriginMap outputMap(output, patterns);
  HidingMasks inMaster(masterMap, false);
  HidingMasks inOutput(outputMap, true);
  for (const MaskPair& pair : alignMasks(masterMap, outputMap).pairs) {
    if (findHiddenDifference(masterMap, outputMap, pair)) {
      inMaster.add(pair.master);
      inOutput.add(pair.output);
    }
  }
  const OutsizedMask largest = std::max(inMaster.largest(), inOutput.largest(), isLess);
  if (isBeyond(largest, limits.match)) {
    return rounded(largest);
  }
  const OutsizedMask sum = std::max(inMaster.sum(), inOutput.sum(), isLess);
  return isBeyond(sum, limits.sum) ? std::optional(rounded(sum)) : std::nullopt;
}
