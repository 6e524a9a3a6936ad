#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "orvdiff/harness/MOXTestCase.h"

namespace orvdiff::detail {

/// The banner that opens a log. Every line is 80 columns wide unless a text exceeds its field; a
/// column is one code point of UTF-8 text.
struct MOXBanner {
  int level;
  const char* description;  ///< may be null

  /// False at level Minimal, where the banner is two lines.
  bool isFramed() const;

  /// Writes the banner with the current time. A null `logFileName` omits the log-file line; an
  /// empty name means that there is no log file.
  void write(std::ostream& out, const std::string* logFileName) const;
};

/// The results table that closes a log, shortened at lower levels.
class MOXReport {
 public:
  /// Copies the counters. `otherScriptErrors` occurred outside every test case.
  MOXReport(int level, const std::vector<std::unique_ptr<MOXTestCase>>& tests,
            std::uint32_t otherScriptErrors);

  /// Whether a check failed or a script error occurred; false at level None.
  bool isFailed() const;

  /// Writes the report with the current time.
  void write(std::ostream& out) const;

 private:
  struct Row {
    std::string label;
    std::uint64_t scriptErrors = 0;
    std::uint64_t failed = 0;
    std::uint64_t passed = 0;
    std::uint64_t warned = 0;

    void add(const Row& other);
    bool isFailed() const { return scriptErrors + failed > 0; }
    const char* result() const { return isFailed() ? ">> FAIL" : "   PASS"; }
    std::string text() const;
  };

  const int m_level;
  std::vector<Row> m_rows;  // the test cases in start order, then the rest
  Row m_totals;
};

}  // namespace orvdiff::detail
