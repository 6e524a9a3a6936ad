#pragma once

#if __has_include(<catch2/catch_test_macros.hpp>)
#include <catch2/catch_test_macros.hpp>  // version 3
#else
#include <catch2/catch.hpp>  // version 2
#endif

#include <cstddef>
#include <exception>
#include <string>

#include "orvdiff/bridges/OrvDiffExplanation.h"
#include "orvdiff/registry/OrvDiffListener.h"
#include "orvdiff/registry/OrvDiffResult.h"

/// Makes each comparison an assertion of the running Catch2 test case, of version 2 or 3. A failure
/// does not end the test case; it names the output and its line, and shows where the texts begin to
/// differ.
///
/// Create one in each test case or section. If it is destroyed without a notification, the test
/// case fails: a mistyped location verifies nothing, and must not pass for it. Not part of the
/// library itself: the test compiles it, and needs nothing but orvdiff and Catch2.
class OrvDiffCatch2Listener : public OrvDiffListener {
 public:
  using OrvDiffListener::comparisonNotification;

  ~OrvDiffCatch2Listener() override {
    if (m_pairs == 0 && std::uncaught_exceptions() == 0) {
      try {
        fail("orvdiff compared nothing: no report with a master was verified in this test case");
      } catch (...) {
        // With --abort, a failure that has been counted ends the test case by an exception. None
        // may leave a destructor, and the next assertion throws it again.
      }
    }
  }

  void comparisonNotification(const OrvDiffResult& result) override {
    ++m_pairs;
    const OrvDiffExplanation explained = OrvDiffExplanation::of(result);
    if (explained.isPassed) {
      succeed(explained.text);
    } else {
      fail(explained.text);
    }
  }

  /// How many pairs were compared, passes included.
  std::size_t pairs() const { return m_pairs; }

 private:
#ifdef CATCH_CONFIG_PREFIX_ALL
  static void succeed(const std::string& text) {
    CATCH_SUCCEED(text);
  }
  static void fail(const std::string& text) {
    CATCH_FAIL_CHECK(text);
  }
#else
  static void succeed(const std::string& text) {
    SUCCEED(text);
  }
  static void fail(const std::string& text) {
    FAIL_CHECK(text);
  }
#endif

  std::size_t m_pairs = 0;
};
