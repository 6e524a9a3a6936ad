#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "cli/commands/Accounting.h"
#include "cli/diff/KnownDifferences.h"
#include "cli/record/RecordWriter.h"
#include "cli/report/ClosingSummary.h"
#include "cli/report/GroupPrinter.h"
#include "cli/report/HarnessLog.h"
#include "cli/report/LogAdapters.h"
#include "cli/report/NormalizedSaver.h"
#include "cli/report/ReportFiles.h"
#include "cli/report/SummaryFile.h"
#include "cli/terminal/Progress.h"
#include "cli/workers/PairVerifier.h"
#include "cli/workers/WorkerPool.h"

/// What a run tells of its results besides printing them; each may be null.
struct RunLogs {
  SummaryFile* summary = nullptr;
  NormalizedSaver* saver = nullptr;
  HarnessLog* harness = nullptr;
  RecordWriter* record = nullptr;
  Accounting* account = nullptr;
  ReportFiles* reports = nullptr;
  KnownDifferences* known = nullptr;
};

/// Verifies reports in worker processes, and tells of their pairs in the order of the reports.
class SuiteRun : private PoolWork {
 public:
  /// All arguments must outlive the run.
  SuiteRun(const std::vector<std::string>& reports, PairVerifier& verifier, GroupPrinter& printer,
           const RunLogs& logs);

  /// Verifies everything, unless the user stops it before.
  void verify(const PoolLimits& limits, bool showProgress);

  RunTotals& totals() { return m_totals; }

  /// Whether the summary has heard of every result.
  bool isSummaryWhole() const { return !m_isSummaryBroken; }

 private:
  void perform(std::uint32_t task, std::uint64_t firstStep, WorkerLink& link) override;
  std::uint64_t stepAfter(std::uint64_t step) const override;
  bool isRepeatable(std::uint64_t step) const override;
  void received(std::uint32_t task, std::string_view message) override;
  void lost(std::uint32_t task, std::string_view description, const WorkerLoss& loss) override;
  void finished(std::uint32_t task) override;

  void deliver(std::uint32_t task, PairResult pair);
  void tellLogs(const PairResult& pair);
  void tellHarnessWithoutResult(const PairRecord& pair);
  void guard(bool& isBroken, const char* log, const std::function<void()>& tell);
  void tellHarness(const std::function<void(HarnessLog&)>& tell);

  const std::vector<std::string>& m_reports;
  PairVerifier& m_verifier;
  GroupPrinter& m_printer;
  const RunLogs m_logs;
  double m_secondsPerPair = 0;
  RunTotals m_totals;
  Progress* m_progress = nullptr;
  // Of the report whose results are arriving.
  bool m_isVerified = false;
  bool m_hasPairs = false;
  std::map<std::string, std::size_t> m_notRun;  ///< pairs by what is to say of them, of the report
  // Of all reports.
  std::map<std::string, std::size_t> m_allNotRun;
  std::unordered_set<std::string> m_verifiedStems;
  bool m_isSummaryBroken = false;
  bool m_isHarnessBroken = false;
  bool m_isSaverBroken = false;
  bool m_isRecordBroken = false;
  bool m_isReportBroken = false;
};
