#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "cli/report/ReportRenderer.h"

/// The run in the XML that build servers read: a test suite for each folder of reports, a test case
/// for each pair. A case keeps its names from run to run, so that servers can tell its history.
///
/// The document keeps to the strictest schema in use, which allows a case no attributes but
/// `classname`, `name` and `time`: a server that checks drops the whole file otherwise. So `file`
/// stands at the suite, and the body of a case that did not pass names its files.
class JUnitReport : public ReportRenderer {
 public:
  void add(const PairRecord& pair, const FileReader& read) override;
  ReportDocument finish(const ReportSummary& summary) override;

 private:
  enum class Outcome { Passed, Failure, Error, Skipped };

  struct Case {
    std::string className;
    std::string name;
    double seconds = 0;
    Outcome outcome = Outcome::Passed;
    std::string type;
    std::string message;
    std::string body;
  };

  struct Suite {
    std::string name;
    std::string cases;
    std::size_t tests = 0;
    std::size_t failures = 0;
    std::size_t errors = 0;
    std::size_t skipped = 0;
    double seconds = 0;

    void count(const Case& added);
    std::string counts() const;
  };

  static Outcome outcomeOf(Verdict verdict);
  void addCase(const std::string& suite, const Case& added);
  void addRun(const RunRecord& run);

  std::vector<Suite> m_suites;  ///< in the order of the run
  std::unordered_map<std::string, std::size_t> m_indexOf;
  std::unordered_map<std::string, std::size_t> m_uses;  ///< of the names of a case
  std::unordered_set<std::string> m_shownChanges;       ///< ids of groups
  std::size_t m_bytesOfBodies = 0;
  Suite m_all;
};
