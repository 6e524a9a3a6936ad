#include <chrono>
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "cli/ClosingSummary.h"
#include "cli/Commands.h"
#include "cli/FormatSelection.h"
#include "cli/HarnessLog.h"
#include "cli/Interrupt.h"
#include "cli/ListCommand.h"
#include "cli/NormalizedSaver.h"
#include "cli/OutputPlace.h"
#include "cli/PairFilter.h"
#include "cli/Printable.h"
#include "cli/Progress.h"
#include "cli/QuietConsole.h"
#include "cli/ReportFinder.h"
#include "cli/ResultPrinter.h"
#include "cli/SummaryFile.h"
#include "cli/Trouble.h"
#include "orvdiff/registry/OrvDiffEngineRegistry.h"

namespace {

constexpr const char* kOutputRoot = "../webcontent/bi";

/// Sends what was printed on its way, before a script prints behind its back. Unlike
/// `std::cout.flush()`, leaves the progress line alone when nothing was printed.
void sendOutput() {
  if (std::cout.rdbuf()->pubsync() != 0) {
    std::cout.setstate(std::ios::badbit);
  }
}

/// Drives the registry over reports and formats. What one of them raises does not keep the others
/// from being verified.
class Run {
 public:
  /// `quiet` keeps what the library prints to itself.
  Run(const std::vector<SelectedFormat>& formats, const FoundReports& found, const Palette& palette,
      bool quiet)
      : m_formats(formats),
        m_reports(found.reports),
        m_palette(palette),
        m_quiet(quiet),
        m_filter(found.neighbours) {
    m_totals.emptyLocations = found.emptyLocations;
    for (const SelectedFormat& selected : formats) {
      m_registry.registerDiffEngine(selected.format->format, selected.engine.get());
    }
    m_registry.addListener(&m_filter);
    m_filter.add(m_totals.pairs);
  }

  void addListener(OrvDiffListener& listener) { m_filter.add(listener); }

  /// `log` is told where each report starts and ends, and must outlive the run.
  void logTo(HarnessLog& log) {
    m_filter.add(log.listener());
    m_harnessLog = &log;
  }

  void verify(bool showProgress) {
    const auto start = std::chrono::steady_clock::now();
    const InterruptWatch watch;
    Progress progress(showProgress);
    m_totals.reports = m_reports.size();
    std::ptrdiff_t finished = 0;
    try {
      for (const std::string& report : m_reports) {
        stopIfWanted();
        sendOutput();
        ++m_totals.done;
        verifyReport(report, progress);
        ++finished;
      }
    } catch (const Interrupted&) {
      m_totals.interrupted = true;
    }
    m_totals.unverified =
        m_filter.unverifiedAmong({m_reports.begin(), m_reports.begin() + finished});
    m_totals.time = std::chrono::steady_clock::now() - start;
  }

  RunTotals& totals() { return m_totals; }

 private:
  static void stopIfWanted() {
    if (InterruptWatch::isStopWanted()) {
      throw Interrupted();
    }
  }

  void verifyReport(const std::string& report, Progress& progress) {
    const HarnessLog::TestCase testCase(m_harnessLog, report);
    bool isVerified = false;
    for (const SelectedFormat& selected : m_formats) {
      stopIfWanted();
      progress.show(m_totals.done, m_reports.size(), report);
      m_filter.startReport(report, selected.format->name);
      try {
        const QuietConsole quiet(m_quiet);
        m_registry.verifyOutput(selected.format->format, report.c_str(), nullptr);
        isVerified = isVerified || m_filter.countSinceStart() > 0;
      } catch (const std::exception& error) {
        isVerified = true;
        ++m_totals.errors;
        m_filter.claimMasters();
        printError(report, selected, error);
        testCase.fail(error.what());
      }
    }
    if (!isVerified) {
      testCase.note("Not verified: no selected format has a master.");
    }
  }

  /// None when a folder cannot be read, which is then what the error was about.
  static std::vector<OrvFilePair> findPairs(const std::string& report,
                                            const SelectedFormat& selected) {
    try {
      return selected.engine->findPairs(report);
    } catch (const std::exception&) {
      return {};
    }
  }

  /// The engine stopped at the first pair that nobody has heard of.
  void printError(const std::string& report, const SelectedFormat& selected,
                  const std::exception& error) const {
    std::cout << m_palette.paint(Color::Red, "error") << "    " << printable(report) << " ("
              << selected.format->name << "): " << printable(error.what()) << '\n';
    const std::vector<OrvFilePair> pairs = findPairs(report, selected);
    const std::size_t reached = m_filter.countSinceStart();
    if (reached < pairs.size()) {
      std::cout << "          at " << printable(pairs[reached].master) << " -> "
                << printable(pairs[reached].actual) << "; " << pairs.size() - reached - 1
                << " more of this format not compared\n";
    }
  }

  const std::vector<SelectedFormat>& m_formats;
  const std::vector<std::string>& m_reports;
  const Palette& m_palette;
  const bool m_quiet;
  OrvDiffEngineRegistry m_registry;
  PairFilter m_filter;
  HarnessLog* m_harnessLog = nullptr;
  RunTotals m_totals;
};

void printHint(const RunTotals& totals) {
  std::error_code ignored;
  if (totals.pairs.missing > 0 && !std::filesystem::is_directory(kOutputRoot, ignored)) {
    std::cerr << "orvdiff: there is no folder " << kOutputRoot
              << " here; -C names the folder to run from\n";
  }
}

/// Finishes what a run has written, so that the closing line knows whether all of it is there: what
/// cannot be finished becomes one of the `shortfalls`.
void finishFiles(std::optional<SummaryFile>& summary, std::optional<HarnessLog>& harnessLog,
                 bool interrupted, std::vector<std::string>& shortfalls) {
  try {
    if (summary) {
      interrupted ? summary->leaveUnfinished() : summary->finish();
    }
  } catch (const Trouble& unwritten) {
    shortfalls.emplace_back(unwritten.what());
  }
  try {
    if (harnessLog) {
      harnessLog->finish(interrupted ? std::vector<std::string>{"interrupted"} : shortfalls);
    }
  } catch (const Trouble& unwritten) {
    shortfalls.emplace_back(unwritten.what());
  }
}

}  // namespace

ExitStatus run(const VerifyOptions& options) {
  const std::vector<SelectedFormat> formats = selectFormats(options.formats);
  OutputPlaces places(options);
  const FoundReports found = findReports(options.locations);
  if (options.listOnly) {
    return listPairs(found, formats, options.allowNone);
  }
  places.requireFree(options, found, formats);
  std::optional<HarnessLog> harnessLog;
  if (places.harnessLog) {
    harnessLog.emplace(*places.harnessLog, options.harnessLogLevel);
  }
  std::optional<SummaryFile> summary;
  if (!options.summaryFile.empty()) {
    summary.emplace(places.summary ? &*places.summary : nullptr);
  }
  const Palette palette(options.color);
  ResultPrinter printer(options.verbosity, palette);
  NormalizedSaver saver;
  const bool quiet = options.verbosity == Verbosity::Quiet;
  Run run(formats, found, palette, quiet);
  run.addListener(printer);
  if (summary) {
    run.addListener(summary->listener());
  }
  if (options.saveNormalized) {
    run.addListener(saver);
  }
  if (harnessLog) {
    harnessLog->start();
    run.logTo(*harnessLog);
  }
  run.verify(!quiet && canShowProgress());
  RunTotals& totals = run.totals();
  totals.unsaved = saver.unsavedFiles();
  std::vector<std::string> shortfalls = shortfallsOf(totals, options.allowNone);
  finishFiles(summary, harnessLog, totals.interrupted, shortfalls);
  printClosingSummary(totals, shortfalls, options.verbosity, palette);
  printHint(totals);
  return exitStatusOf(totals, shortfalls);
}
