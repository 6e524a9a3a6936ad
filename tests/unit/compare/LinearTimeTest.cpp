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

/// Writes expressions of few letters, so that their parts compete for the same bytes, and texts
/// that repeat a few letters.
class RandomCases {
 public:
  struct Text {
    std::string start, repeated, end;
    std::string build(std::size_t size) const {
      std::string text = start;
      while (text.size() < size) {
        text += repeated;
      }
      return text + end;
    }
  };

  std::string expression() { return sequence(0) + oneOf({"", "x"}); }

  Text text() {
    const std::string first = oneOf({"a", "b", "c", "x"});
    const std::string repeated = below(5) == 0 ? std::string(1 + below(30), first[0]) : first;
    return {letters(4), repeated + letters(6), letters(3)};
  }

 private:
  std::size_t below(std::size_t count) { return m_random() % count; }

  std::string oneOf(std::initializer_list<const char*> choices) {
    return choices.begin()[below(choices.size())];
  }

  std::string letter() { return oneOf({"a", "a", "b", "b", "c", "x", "ab", "ba"}); }

  std::string letters(std::size_t most) {
    std::string text;
    for (std::size_t i = below(most); i > 0; --i) {
      text += letter();
    }
    return text;
  }

  std::string sequence(int depth) {
    std::string text;
    for (std::size_t i = 1 + below(4); i > 0; --i) {
      text += element(depth);
    }
    return text;
  }

  std::string element(int depth) {
    switch (below(depth < 2 ? 8 : 6)) {
      case 0:
        return letter();
      case 1:
        return letter() + oneOf({"*", "*?", "+", "?"});
      case 2:
        return oneOf({".*?", ".*"}) + letter();
      case 6:
        return "(" + sequence(depth + 1) + alternative(depth + 1) + ")" + oneOf({"", "?"});
      case 7:
        return "(" + letter() + sequence(depth + 1) + alternative(depth + 1) + ")*";
      default:
        return oneOf({"[ab]", "[bc]", "[ac]", "[abc]", "[ax]", "[abx]"}) +
               oneOf({"*", "*", "*?", "+", "?", ""});
    }
  }

  std::string alternative(int depth) {
    return below(2) == 0 ? "" : "|" + letter() + sequence(depth);
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
      const RandomCases::Text text = cases.text();
      const std::size_t small = stepsOf({&pattern}, text.build(1000));
      const std::size_t large = stepsOf({&pattern}, text.build(8000));
      ASSERT_LE(large, 12 * (small + 1000))
          << expression << " on " << text.start << '(' << text.repeated << ")*" << text.end;
    }
  }
}

}  // namespace
