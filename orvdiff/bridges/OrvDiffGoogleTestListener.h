#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <exception>

#include "orvdiff/bridges/OrvDiffExplanation.h"
#include "orvdiff/registry/OrvDiffListener.h"
#include "orvdiff/registry/OrvDiffResult.h"

/// Makes each comparison a non-fatal expectation of the running GoogleTest test. A failure names
/// the output and its line, and shows where the texts begin to differ.
///
/// Create one in each test, or as a member of its fixture. If it is destroyed without a
/// notification, the test fails: a mistyped location verifies nothing, and must not pass for it. A
/// test that has been skipped or has failed is left alone. Not part of the library itself: the test
/// compiles it, and needs nothing but orvdiff and GoogleTest.
class OrvDiffGoogleTestListener : public OrvDiffListener {
 public:
  using OrvDiffListener::comparisonNotification;

  ~OrvDiffGoogleTestListener() override {
    if (m_pairs > 0 || std::uncaught_exceptions() > 0 || testing::Test::IsSkipped() ||
        testing::Test::HasFailure()) {
      return;
    }
    const testing::TestInfo* const test = testing::UnitTest::GetInstance()->current_test_info();
    ADD_FAILURE_AT(test == nullptr ? nullptr : test->file(), test == nullptr ? -1 : test->line())
        << "orvdiff compared nothing: no report with a master was verified in this test";
  }

  void comparisonNotification(const OrvDiffResult& result) override {
    ++m_pairs;
    const OrvDiffExplanation explained = OrvDiffExplanation::of(result);
    if (explained.isPassed) {
      SUCCEED() << explained.text;
    } else {
      const int line = explained.line == 0 ? -1 : static_cast<int>(explained.line);
      ADD_FAILURE_AT(explained.file.c_str(), line) << explained.text;
    }
  }

  /// How many pairs were compared, passes included.
  std::size_t pairs() const { return m_pairs; }

 private:
  std::size_t m_pairs = 0;
};
