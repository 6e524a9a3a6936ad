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

/// Parts of expressions, of few letters, so that they compete for the same bytes.
const char* const kElements[] = {
    "a",       "b",      "c",       "x",        "a*",         "b*?",         "a+",
    "b?",      ".*a",    ".*?b",    ".*?c",     "[ab]*",      "[ab]*?",      "[bc]*",
    "[abc]*",  "[ac]+",  "[abx]?",  "[bc]",     "(ab|ba?)",   "(b[ab]*|a)?", "(a.*?b|b[bc]*x)",
    "(a|bb)*", "(ab*)*", "(ba*?)*", "(b[ac])*", "(a|b(ab)?)*"};
const char* const kLetters[] = {"a", "a", "b", "b", "c", "x", "ab", "ba"};

TEST(LinearTime, HoldsForRandomExpressionsOnPeriodicTexts) {
  std::mt19937 random(20261123);
  const auto below = [&random](std::size_t count) { return random() % count; };
  const auto several = [&below](std::size_t count, const auto& choices) {
    std::string text;
    for (; count > 0; --count) {
      text += choices[below(std::size(choices))];
    }
    return text;
  };
  for (int tried = 0; tried < 1000;) {
    const std::string expression = several(1 + below(4), kElements) + (below(2) == 0 ? "" : "x");
    const OrvDiffNormalizationPattern pattern(expression.c_str(), nullptr);
    if (!orvdiff::WorkingText::cannotFail({&pattern})) {
      continue;
    }
    ++tried;
    for (int i = 0; i < 4; ++i) {
      const std::string start = several(below(4), kLetters), end = several(below(3), kLetters);
      const std::size_t run = below(5) == 0 ? 1 + below(30) : 1;
      const std::string repeated = std::string(run, "abcx"[below(4)]) + several(below(6), kLetters);
      const HostileDocument text{"", start.c_str(), repeated.c_str(), end.c_str()};
      const std::size_t small = stepsOf({&pattern}, text.build(1000 / repeated.size()));
      const std::size_t large = stepsOf({&pattern}, text.build(8000 / repeated.size()));
      ASSERT_LE(large, 12 * (small + 1000))
          << expression << " on " << start << '(' << repeated << ")*" << end;
    }
  }
}

}  // namespace
