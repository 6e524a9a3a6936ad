#include "cli/diff/GapAlignment.h"

#include <algorithm>
#include <iterator>

namespace {

using Pairs = std::vector<std::pair<std::uint32_t, std::uint32_t>>;
using Indices = std::vector<std::uint32_t>;

constexpr std::uint64_t kMostCells = 1'000'000;  // of the table below, 4 bytes each

/// The pairs of positions that have most in common in sum, and in order: the longest common
/// subsequence, weighted.
Pairs mostSimilar(const Indices& a, const Indices& b, const Similarity& similarity) {
  const std::size_t columns = b.size() + 1;
  std::vector<std::uint32_t> best((a.size() + 1) * columns);  // of the rests from i and from j
  std::vector<std::uint32_t> common(a.size() * b.size());
  for (std::size_t i = a.size(); i-- > 0;) {
    for (std::size_t j = b.size(); j-- > 0;) {
      const std::uint32_t inCommon = common[i * b.size() + j] = similarity(a[i], b[j]);
      const std::uint32_t paired = inCommon + best[(i + 1) * columns + j + 1];
      best[i * columns + j] =
          std::max({paired, best[(i + 1) * columns + j], best[i * columns + j + 1]});
    }
  }
  Pairs pairs;
  for (std::size_t i = 0, j = 0; i < a.size() && j < b.size();) {
    const std::uint32_t inCommon = common[i * b.size() + j];
    if (inCommon > 0 && best[i * columns + j] == inCommon + best[(i + 1) * columns + j + 1]) {
      pairs.emplace_back(i++, j++);
    } else if (best[i * columns + j] == best[(i + 1) * columns + j]) {
      ++i;
    } else {
      ++j;
    }
  }
  return pairs;
}

/// Pairs one by one what is left between `pairs`, wherever as many are left on both sides.
Pairs fillEqualGaps(const Pairs& pairs, std::size_t sizeOfA, std::size_t sizeOfB) {
  Pairs filled;
  std::size_t i = 0;
  std::size_t j = 0;
  const auto fill = [&](std::size_t endI, std::size_t endJ) {
    for (; endI - i == endJ - j && i < endI; ++i, ++j) {
      filled.emplace_back(i, j);
    }
    i = endI;
    j = endJ;
  };
  for (const auto& [inA, inB] : pairs) {
    fill(inA, inB);
    filled.emplace_back(i++, j++);
  }
  fill(sizeOfA, sizeOfB);
  return filled;
}

}  // namespace

Pairs pairUnequal(const Indices& a, const Indices& b, const Similarity& similarity,
                  std::uint64_t costOfOne, WorkBudget& budget) {
  const std::uint64_t cells = std::uint64_t{a.size()} * b.size();
  Pairs pairs;
  if (cells > 1 && cells <= kMostCells && budget.spend(cells * costOfOne)) {
    pairs = mostSimilar(a, b, similarity);
  }
  pairs = fillEqualGaps(pairs, a.size(), b.size());
  for (auto& [inA, inB] : pairs) {
    inA = a[inA];
    inB = b[inB];
  }
  return pairs;
}

std::uint32_t placeInB(const std::vector<SequenceEdit>& edits, std::uint32_t a) {
  const auto after = std::upper_bound(
      edits.begin(), edits.end(), a,
      [](std::uint32_t place, const SequenceEdit& edit) { return place < edit.beginA; });
  if (after == edits.begin()) {
    return a;
  }
  const SequenceEdit& edit = *std::prev(after);
  return a < edit.endA ? edit.beginB + std::min(a - edit.beginA, edit.endB - edit.beginB)
                       : edit.endB + (a - edit.endA);
}
