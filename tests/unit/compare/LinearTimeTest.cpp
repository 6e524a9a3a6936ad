#include <gtest/gtest.h>

#include <random>
#include <string>

#include "orvdiff/compare/WorkingText.h"
#include "orvdiff/compare/pattern/LinearMatcher.h"
#include "tests/support/HostileDocuments.h"
#include "tests/support/PlainNormalizer.h"

// The matcher of this test program counts its steps, so no clock is needed.

namespace {

std::size_t stepsOf(const OrvPatternList& patterns, const std::string& text) {
  const std::size_t before = orvdiff::pattern::matcherSteps;
  normalize(text, patterns);
  return orvdiff::pattern::matcherSteps - before;
}

TEST(LinearTime, HoldsForEveryListOnHostileDocuments) {
  constexpr std::size_t kStepsPerByte = 16;  // of each pattern
  for (const NamedPatterns& each : patternListsToTry()) {
    const OrvPatternList& patterns = each.patterns.list();
    for (const HostileDocument& document : kHostileDocuments) {
      for (const std::size_t repetitions : {200U, 1600U}) {
        const std::string text = document.build(repetitions);
        ASSERT_LE(stepsOf(patterns, text), kStepsPerByte * text.size() * patterns.size())
            << each.name << " on " << repetitions << " times " << document.name;
      }
    }
  }
}

TEST(LinearTime, ABranchFailsOnceAtEachPosition) {
  const OrvDiffNormalizationPattern pattern("(a|bb?)*[cd]", nullptr);
  const std::string text(10000, 'a');
  EXPECT_LE(stepsOf({&pattern}, text), 16 * text.size());
}

/// Draws expressions of few letters, so that their parts compete for the same bytes, and parts of
/// texts that repeat a few letters.
class RandomCases {
 public:
  std::string expression() { return sequence(0) + oneOf({"", "x"}); }

  std::string letters(std::size_t most) {
    return several(below(most), [&] { return letter(); });
  }

  std::size_t below(std::size_t count) { return m_random() % count; }

  std::string oneOf(std::initializer_list<const char*> choices) {
    return choices.begin()[below(choices.size())];
  }

 private:
  template <typename Draw>
  static std::string several(std::size_t count, Draw draw) {
    std::string text;
    for (; count > 0; --count) {
      text += draw();
    }
    return text;
  }

  std::string letter() { return oneOf({"a", "a", "b", "b", "c", "x", "ab", "ba"}); }

  std::string sequence(int depth) {
    return several(1 + below(4), [&] { return element(depth); });
  }

  std::string element(int depth) {
    const std::size_t choice = below(depth < 2 ? 8 : 6);
    if (choice < 3) {
      return choice == 2 ? oneOf({".*?", ".*"}) + letter()
                         : letter() + (choice == 1 ? oneOf({"*", "*?", "+", "?"}) : "");
    }
    if (choice < 6) {
      return oneOf({"[ab]", "[bc]", "[ac]", "[abc]", "[ax]", "[abx]"}) +
             oneOf({"*", "*", "*?", "+", "?", ""});
    }
    const std::string group = (choice == 7 ? letter() : "") + sequence(depth + 1) +
                              (below(2) == 0 ? "" : "|" + letter() + sequence(depth + 1));
    return "(" + group + ")" + (choice == 7 ? "*" : oneOf({"", "?"}));
  }

  std::mt19937 m_random{20261123};
};

TEST(LinearTime, HoldsForRandomExpressionsOnPeriodicTexts) {
  RandomCases cases;
  for (int tried = 0; tried < 1000;) {
    const std::string expression = cases.expression();
    const OrvDiffNormalizationPattern pattern(expression.c_str(), nullptr);
    if (!orvdiff::WorkingText::cannotFail({&pattern})) {
      continue;
    }
    ++tried;
    for (int i = 0; i < 4; ++i) {
      const std::string first = cases.oneOf({"a", "b", "c", "x"});
      const std::string start = cases.letters(4), end = cases.letters(3);
      const std::size_t run = cases.below(5) == 0 ? 1 + cases.below(30) : 1;
      const std::string repeated = std::string(run, first[0]) + cases.letters(6);
      const HostileDocument text{"", start.c_str(), repeated.c_str(), end.c_str()};
      const std::size_t small = stepsOf({&pattern}, text.build(1000 / repeated.size()));
      const std::size_t large = stepsOf({&pattern}, text.build(8000 / repeated.size()));
      ASSERT_LE(large, 12 * (small + 1000))
          << expression << " on " << start << '(' << repeated << ")*" << end;
    }
  }
}

}  // namespace
