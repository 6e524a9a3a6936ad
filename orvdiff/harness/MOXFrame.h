#pragma once

#include <cstdint>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "orvdiff/harness/MOXTestCase.h"

/// The frame that opens a log: every line 80 columns wide, unless a text outgrows its field. A
/// column is one character (code point) of UTF-8 text.
struct MOXBanner {
  int level;
  const char* description;  ///< may be null

  /// False at level Minimal, where the banner is two lines.
  bool isFramed() const;

  /// Writes the banner with the current time. `logFileName` is null for a banner that does not say
  /// where the log is; an empty name shows that there is no log file.
  void write(std::ostream& out, const std::string* logFileName) const;
};

/// The results table that closes a log, or what a lower level leaves of it.
class MOXReport {
 public:
  /// Takes the counters as they stand. `otherScriptErrors` were made outside every test case.
  MOXReport(int level, const std::vector<std::unique_ptr<MOXTestCase>>& tests,
            std::uint32_t otherScriptErrors);

  /// Whether a check failed or a script error was made; false at level None.
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
  std::vector<Row> m_rows;  // the test cases in start order, then what belongs to none
  Row m_totals;
};
