#include "cli/commands/RunOutputs.h"

#include <exception>
#include <functional>
#include <utility>

#include "cli/commands/RunHeader.h"
#include "cli/system/TimeStamp.h"
#include "cli/terminal/ErrorCause.h"

namespace {

template <typename Output>
Output* orNull(std::optional<Output>& output) {
  return output ? &*output : nullptr;
}

/// Calls `finish`, whose error becomes one of the `problems`.
void finishOrSayWhy(const std::function<void()>& finish, std::vector<std::string>& problems) {
  try {
    finish();
  } catch (const std::exception& unwritten) {
    problems.push_back(causeOf(unwritten, Verbosity::Normal));
  }
}

/// What a record and reports say of a run at its end. One that was stopped stays incomplete.
RunRecord endedRun(RunRecord run, const RunTotals& totals,
                   const std::vector<std::string>& problems) {
  run.end = timeStamp();
  run.unverified = totals.unverified;
  run.findings = totals.findings;
  run.notes = problems;
  run.remarks = totals.remarks;
  run.known = totals.known;
  run.status = exitStatusOf(totals, problems);
  run.complete = !totals.interrupted && totals.incomplete.empty();
  return run;
}

}  // namespace

RunOutputs::RunOutputs(const VerifyOptions& options, OutputPlaces& places, RunRecord header)
    : m_header(std::move(header)),
      m_savesNormalized(options.saveNormalized),
      m_reports(*places.reports) {
  if (places.harnessLog) {
    m_harnessLog.emplace(*places.harnessLog, options.harnessLogLevel);
  }
  if (!options.summaryFile.empty()) {
    m_summary.emplace(orNull(places.summary));
  }
  m_reports.clear();
  if (!options.recordFolder.empty()) {
    m_record.emplace(options.recordFolder, m_header, options.evidence);
  }
  if (m_harnessLog) {
    m_harnessLog->start();
  }
}

RunLogs RunOutputs::logs(Accounting& account) {
  return {orNull(m_summary),
          m_savesNormalized ? &m_saver : nullptr,
          orNull(m_harnessLog),
          orNull(m_record),
          &account,
          m_reports.isEmpty() ? nullptr : &m_reports};
}

void RunOutputs::finish(SuiteRun& run, std::vector<std::string>& problems) {
  const bool interrupted = run.totals().interrupted;
  if (m_summary && run.isSummaryWhole()) {
    finishOrSayWhy([&] { interrupted ? m_summary->leaveUnfinished() : m_summary->finish(); },
                   problems);
  }
  if (m_harnessLog) {
    const auto told = interrupted ? std::vector<std::string>{"interrupted"} : problems;
    finishOrSayWhy([&] { m_harnessLog->finish(told); }, problems);
  }
  const RunRecord ended = endedRun(m_header, run.totals(), problems);
  if (m_record) {
    finishOrSayWhy([&] { m_record->finish(ended); }, problems);
  }
  const std::vector<std::string> unwritten = m_reports.finish(ended);
  problems.insert(problems.end(), unwritten.begin(), unwritten.end());
}
