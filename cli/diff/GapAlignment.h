#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "cli/diff/SequenceDiff.h"

/// How much two things have in common; 0: nothing, so that one cannot have become the other.
using Similarity = std::function<std::uint32_t(std::uint32_t a, std::uint32_t b)>;

/// Finds out which things of `a` may have become which of `b`, where neither has an equal on the
/// other side: pairs, ascending on both sides, that have most in common. `costOfOne` steps are
/// taken from `budget` for each similarity. Lists of the same length that are too long for that are
/// paired one by one, others not at all.
std::vector<std::pair<std::uint32_t, std::uint32_t>> pairUnequal(
    const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b,
    const Similarity& similarity, std::uint64_t costOfOne, WorkBudget& budget);

/// Where thing `a` would be in the other sequence, by the edits that separate the two: puts what is
/// only in one of them into one order.
std::uint32_t placeInB(const std::vector<SequenceEdit>& edits, std::uint32_t a);
