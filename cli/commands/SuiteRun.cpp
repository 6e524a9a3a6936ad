#include "cli/commands/SuiteRun.h"

#include <exception>
#include <filesystem>
#include <iostream>
#include <utility>

#include "cli/record/UnchangedFile.h"
#include "cli/suite/PairOwners.h"
#include "cli/system/CommandError.h"
#include "cli/system/Interrupt.h"
#include "cli/terminal/ErrorCause.h"
#include "cli/terminal/Printable.h"
#include "cli/workers/LostPair.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

/// Sends what was printed on its way, so that results show as they come. Unlike
/// `std::cout.flush()`, leaves the progress line alone when nothing was printed.
void sendPrinted() {
  if (std::cout.rdbuf()->pubsync() != 0) {
    std::cout.setstate(std::ios::badbit);
  }
}

std::string notCompared(std::size_t pairs, const std::string& why) {
  return countOf(pairs, "pair") + why;
}

/// Reads a file that was compared from where it lies.
std::string readCompared(const std::string& name, const FileFacts& facts) {
  constexpr std::uintmax_t kMost = std::uintmax_t{16} << 20;
  std::error_code unknown;
  if (std::filesystem::file_size(name, unknown) > kMost) {
    throw CommandError("left out: larger than " + std::to_string(kMost) + " bytes");
  }
  std::optional<std::string> bytes = readUnchanged(name, facts.hash);
  return bytes ? std::move(*bytes)
               : throw CommandError("changed, or not readable any more, since it was compared");
}

}  // namespace

SuiteRun::SuiteRun(const std::vector<std::string>& reports, PairVerifier& verifier,
                   GroupPrinter& printer, const RunLogs& logs)
    : m_reports(reports), m_verifier(verifier), m_printer(printer), m_logs(logs) {
  m_totals.reports = reports.size();
}

void SuiteRun::verify(const PoolLimits& limits, bool showProgress) {
  const InterruptWatch watch;
  Progress progress(showProgress);
  m_progress = &progress;
  m_secondsPerPair = limits.secondsPerStep;
  sendPrinted();
  WorkerPool pool(*this, static_cast<std::uint32_t>(m_reports.size()), limits);
  m_totals.interrupted = !pool.run(InterruptWatch::isStopWanted) || isReaderGone();
  tellHarness([](HarnessLog& log) { log.endReport(); });
  for (const auto& [why, pairs] : m_allNotRun) {
    m_totals.uncompared.push_back(notCompared(pairs, why));
  }
  m_progress = nullptr;
}

void SuiteRun::perform(std::uint32_t task, std::uint64_t firstStep, WorkerLink& link) {
  m_verifier.verify(task, firstStep, link);
}

std::uint64_t SuiteRun::stepAfter(std::uint64_t step) const {
  return PairVerifier::stepAfter(step);
}

bool SuiteRun::isRepeatable(std::uint64_t step) const {
  return PairVerifier::isListing(step);
}

void SuiteRun::received(std::uint32_t task, std::string_view message) {
  deliver(task, unpackPair(message));
}

void SuiteRun::lost(std::uint32_t task, std::string_view description, const WorkerLoss& loss) {
  PairResult pair = m_verifier.describeLost(description);
  pair.record.report = m_reports[task];
  describeLoss(loss, m_secondsPerPair, pair.record);
  deliver(task, pair);
}

void SuiteRun::deliver(std::uint32_t task, PairResult pair) {
  if (m_logs.known != nullptr) {
    m_logs.known->judge(pair.record);
  }
  tellHarness([&](HarnessLog& log) { log.startReport(m_reports[task]); });
  m_hasPairs = true;
  m_isVerified = m_isVerified || pair.countsForReport;
  m_totals.pairs.add(pair.record);
  if (m_logs.account != nullptr) {
    m_logs.account->note(pair);
  }
  if (pair.record.verdict == Verdict::NotRun) {
    ++m_notRun[" of format " + pair.record.format + " not compared: " + pair.record.message];
  }
  m_printer.add(pair.record);
  tellLogs(pair);
}

/// One log that cannot take a result does not keep it from the others, and is told no more.
void SuiteRun::guard(bool& isBroken, const char* log, const std::function<void()>& tell) {
  if (isBroken) {
    return;
  }
  try {
    tell();
  } catch (const std::exception& error) {
    isBroken = true;
    m_totals.incomplete.push_back(std::string("the ") + log +
                                  " misses results: " + causeOf(error, Verbosity::Normal));
  }
}

void SuiteRun::tellLogs(const PairResult& pair) {
  if (m_logs.record != nullptr) {
    guard(m_isRecordBroken, "record", [&] { m_logs.record->add(pair.record); });
  }
  if (m_logs.reports != nullptr) {
    guard(m_isReportBroken, "report", [&] { m_logs.reports->add(pair.record, readCompared); });
  }
  if (m_logs.summary == nullptr && m_logs.saver == nullptr && m_logs.harness == nullptr) {
    return;
  }
  const std::unique_ptr<const OrvDiffResult> result = rebuildResult(pair);
  if (result == nullptr) {
    tellHarnessWithoutResult(pair.record);
    return;
  }
  if (m_logs.summary != nullptr) {
    guard(m_isSummaryBroken, "summary", [&] {
      StrictPasses adapter(m_logs.summary->listener());
      result->notifyListener(adapter);
    });
  }
  if (m_logs.saver != nullptr) {
    guard(m_isSaverBroken, "list of saved texts", [&] { result->notifyListener(*m_logs.saver); });
  }
  tellHarness([&](HarnessLog& log) {
    HarnessResults adapter(log.listener());
    result->notifyListener(adapter);
  });
}

/// That a pair was not run is said once for the report.
void SuiteRun::tellHarnessWithoutResult(const PairRecord& pair) {
  if (pair.verdict != Verdict::NotRun) {
    tellHarness([&](HarnessLog& log) {
      log.fail(pair.master.empty() ? pair.message
                                   : pair.master + " -> " + pair.output + ": " + pair.message);
    });
  }
}

void SuiteRun::tellHarness(const std::function<void(HarnessLog&)>& tell) {
  if (m_logs.harness != nullptr) {
    guard(m_isHarnessBroken, "harness log", [&] { tell(*m_logs.harness); });
  }
}

void SuiteRun::finished(std::uint32_t task) {
  tellHarness([&](HarnessLog& log) {
    log.startReport(m_reports[task]);
    for (const auto& [why, pairs] : m_notRun) {
      log.fail(notCompared(pairs, why));
    }
    if (!m_hasPairs) {
      log.note("Not verified: no selected format has a master.");
    }
    log.endReport();
  });
  for (const auto& [why, pairs] : m_notRun) {
    m_allNotRun[why] += pairs;
  }
  const std::string stem(stemOf(m_reports[task]));
  if (m_isVerified) {
    m_verifiedStems.insert(stem);
  } else if (m_verifiedStems.count(stem) == 0) {  // else its masters are those of its namesake
    m_totals.unverified.push_back(m_reports[task]);
  }
  m_notRun.clear();
  m_hasPairs = m_isVerified = false;
  ++m_totals.done;
  sendPrinted();
  m_progress->show(m_totals.done, m_reports.size(), m_totals.pairs.failures(), m_reports[task]);
}
