#include "cli/diff/SequenceDiff.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace {

using Ids = std::vector<std::uint32_t>;

/// `b`, made from `a` by the edits; empty when they do not fit. Counts what they touch.
Ids apply(const std::vector<SequenceEdit>& edits, const Ids& a, const Ids& b,
          std::size_t& touched) {
  Ids made;
  std::uint32_t doneA = 0;
  touched = 0;
  for (const SequenceEdit& edit : edits) {
    if (edit.beginA < doneA || edit.endA > a.size() || edit.endB > b.size()) {
      return {};
    }
    made.insert(made.end(), a.begin() + doneA, a.begin() + edit.beginA);
    if (made.size() != edit.beginB) {
      return {};
    }
    made.insert(made.end(), b.begin() + edit.beginB, b.begin() + edit.endB);
    touched += edit.endA - edit.beginA + edit.endB - edit.beginB;
    doneA = edit.endA;
  }
  made.insert(made.end(), a.begin() + doneA, a.end());
  return made;
}

/// The least number of tokens that edits can touch, by the table of all common subsequences.
std::size_t leastTouched(const Ids& a, const Ids& b) {
  std::vector<std::size_t> longest(b.size() + 1, 0);
  for (const auto id : a) {
    std::size_t diagonal = 0;
    for (std::size_t j = 0; j < b.size(); ++j) {
      const std::size_t above = longest[j + 1];
      longest[j + 1] = id == b[j] ? diagonal + 1 : std::max(above, longest[j]);
      diagonal = above;
    }
  }
  return a.size() + b.size() - 2 * longest.back();
}

class Generator {
 public:
  Ids ids(std::size_t most, std::uint32_t alphabet) {
    Ids made(pick(static_cast<std::uint32_t>(most + 1)));
    std::generate(made.begin(), made.end(), [&] { return pick(alphabet); });
    return made;
  }

  /// Some tokens deleted, inserted, moved.
  Ids changed(Ids ids, std::uint32_t alphabet) {
    for (auto count = pick(6); count > 0; --count) {
      const auto place = pick(static_cast<std::uint32_t>(ids.size() + 1));
      const auto end = std::min<std::size_t>(ids.size(), place + pick(4));
      const Ids moved(ids.begin() + place, ids.begin() + static_cast<std::ptrdiff_t>(end));
      ids.erase(ids.begin() + place, ids.begin() + static_cast<std::ptrdiff_t>(end));
      const Ids added = pick(2) == 0 ? moved : this->ids(3, alphabet);
      ids.insert(ids.begin() + pick(static_cast<std::uint32_t>(ids.size() + 1)), added.begin(),
                 added.end());
    }
    return ids;
  }

  std::uint32_t pick(std::uint32_t below) {
    return std::uniform_int_distribution<std::uint32_t>(0, below - 1)(m_random);
  }

 private:
  std::mt19937 m_random{12};
};

TEST(SequenceDiff, TurnsOneSequenceIntoTheOtherWithTheFewestTokensWhereNoAnchorsAreUsed) {
  Generator generate;
  for (int round = 0; round < 6000; ++round) {
    const std::uint32_t alphabet = 1 + generate.pick(round % 2 == 0 ? 4 : 60);
    const Ids a = generate.ids(40, alphabet);
    const Ids b = round % 3 == 0 ? generate.ids(40, alphabet) : generate.changed(a, alphabet);
    for (const Anchors anchors : {Anchors::None, Anchors::Unique}) {
      WorkBudget budget;
      SequenceDiff diff = diffSequences(a, b, budget, anchors);
      std::size_t touched = 0;
      ASSERT_EQ(apply(diff.edits, a, b, touched), b) << "round " << round;
      EXPECT_FALSE(diff.isCoarse);
      if (anchors == Anchors::None) {
        ASSERT_EQ(touched, leastTouched(a, b)) << "round " << round;
      }
      std::size_t touchedAfter = 0;
      slideEdits(diff.edits, a, b, [&](bool isInA, std::uint32_t begin, std::uint32_t) {
        return static_cast<int>((isInA ? a : b)[begin] % 3);
      });
      ASSERT_EQ(apply(diff.edits, a, b, touchedAfter), b) << "slid, round " << round;
      EXPECT_EQ(touchedAfter, touched);
    }
  }
}

TEST(SequenceDiff, KeepsToItsBudgetAndSaysSo) {
  constexpr std::uint32_t kCount = 30'000;
  Ids inOrder(kCount);
  std::iota(inOrder.begin(), inOrder.end(), 0);
  Ids inserted = inOrder;
  inserted.insert(inserted.begin() + 77, 5);
  Ids shuffled = inOrder;
  std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(1));
  Ids changed = inOrder;
  for (std::size_t i = 0; i < kCount; i += 10) {
    changed[i] += kCount;
  }
  Generator generate;
  Ids words(kCount);
  Ids others(kCount);
  std::generate(words.begin(), words.end(), [&] { return generate.pick(50); });
  std::generate(others.begin(), others.end(), [&] { return generate.pick(50); });
  const struct {
    const char* what;
    const Ids &a, &b;
    std::uint64_t steps;
    bool isCoarse;
  } rows[] = {
      {"equal", inOrder, inOrder, 0, false},
      {"one token inserted", inOrder, inserted, 100, false},
      {"a tenth changed", inOrder, changed, 2 * kCount, false},
      {"a tenth changed, too little work allowed", inOrder, changed, kCount, true},
      {"shuffled", inOrder, shuffled, 10'000'000, false},
      {"random from 50 words", words, others, 2'000'000, true},
  };
  for (const auto& row : rows) {
    WorkBudget budget(row.steps);
    const SequenceDiff diff = diffSequences(row.a, row.b, budget);
    std::size_t touched = 0;
    EXPECT_EQ(apply(diff.edits, row.a, row.b, touched), row.b) << row.what;
    EXPECT_EQ(diff.isCoarse, row.isCoarse) << row.what << ", steps left: " << budget.left();
  }
}

TEST(SequenceDiff, SlidesAnInsertedRowToItsStart) {
  enum : std::uint32_t { kRow = 1, kCell, kEnd };
  const Ids a = {kRow, kCell, 10, kEnd, kRow, kCell, 11, kEnd};
  const Ids b = {kRow, kCell, 10, kEnd, kRow, kCell, 12, kEnd, kRow, kCell, 11, kEnd};
  WorkBudget budget;
  auto edits = diffSequences(a, b, budget).edits;
  slideEdits(edits, a, b, [&](bool isInA, std::uint32_t begin, std::uint32_t) {
    return (isInA ? a : b)[begin] == kRow ? 1 : 0;
  });
  ASSERT_EQ(edits.size(), 1U);
  EXPECT_EQ(edits[0].beginB, 4U);
  EXPECT_EQ(edits[0].endB, 8U);
}

}  // namespace
