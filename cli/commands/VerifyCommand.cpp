#include <chrono>
#include <exception>
#include <filesystem>
#include <iostream>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cli/commands/Commands.h"
#include "cli/commands/ListCommand.h"
#include "cli/commands/OutputPlaces.h"
#include "cli/report/ClosingSummary.h"
#include "cli/report/HarnessLog.h"
#include "cli/report/LogAdapters.h"
#include "cli/report/NormalizedSaver.h"
#include "cli/report/ResultPrinter.h"
#include "cli/report/SummaryFile.h"
#include "cli/suite/ComparisonScript.h"
#include "cli/suite/FormatSelection.h"
#include "cli/suite/PairFilter.h"
#include "cli/suite/ReportFinder.h"
#include "cli/system/CommandError.h"
#include "cli/system/Interrupt.h"
#include "cli/system/OutputCapture.h"
#include "cli/terminal/ErrorCause.h"
#include "cli/terminal/Printable.h"
#include "cli/terminal/Progress.h"
#include "orvdiff/registry/OrvDiffEngineRegistry.h"

namespace {

constexpr const char* kOutputRoot = "../webcontent/bi";

/// Sends what was printed on its way, so that results show as they come. Unlike
/// `std::cout.flush()`, leaves the progress line alone when nothing was printed.
void sendOutput() {
  if (std::cout.rdbuf()->pubsync() != 0) {
    std::cout.setstate(std::ios::badbit);
  }
}

/// Hears of each result while the output of engines is being caught. Lets the run's own listeners
/// print, and has the output of the engine shown with the result.
class CaughtResults : public OrvDiffListener {
 public:
  CaughtResults(OutputCapture& capture, ResultPrinter& printer, OrvDiffListener& next)
      : m_capture(capture), m_printer(printer), m_next(next) {}

  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResult& result) override {
    const OutputCapture::Pause pause(m_capture);
    m_printer.setEngineOutput(m_capture.take());
    m_next.comparisonNotification(result);
  }

 private:
  OutputCapture& m_capture;
  ResultPrinter& m_printer;
  OrvDiffListener& m_next;
};

/// A format whose script cannot run.
struct BrokenFormat {
  std::string problem;
  std::size_t pairs = 0;  ///< that were not compared for it
};

/// Drives the registry over reports and formats. What one of them raises does not keep the others
/// from being verified.
class Run {
 public:
  /// `printer` shows results and what engines print.
  Run(const std::vector<SelectedFormat>& formats, const FoundReports& found,
      const VerifyOptions& options, const Palette& palette, ResultPrinter& printer)
      : m_formats(formats),
        m_reports(found.reports),
        m_verbosity(options.verbosity),
        m_palette(palette),
        m_printer(printer),
        m_filter(found.neighbours),
        m_results(m_capture, printer, m_filter) {
    m_totals.emptyLocations = found.emptyLocations;
    for (const SelectedFormat& selected : formats) {
      m_registry.registerDiffEngine(selected.format->format, selected.engine.get());
      std::string problem = scriptProblem(*selected.engine);
      if (!problem.empty()) {
        m_broken[selected.format].problem = std::move(problem);
      }
    }
    m_registry.addListener(&m_results);
    m_filter.add(m_totals.pairs);
    m_filter.add(printer);
  }

  void addListener(OrvDiffListener& listener) { m_filter.add(listener); }

  /// `log` is told where each report starts and ends, and must outlive the run.
  void logTo(HarnessLog& log) {
    m_filter.add(m_harnessResults.emplace(log.listener()));
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
    reportBrokenFormats();
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
      m_printer.startFormat(selected.format->format);
      try {
        isVerified = verifyFormat(report, selected, testCase) || isVerified;
      } catch (const std::exception& error) {
        isVerified = true;
        ++m_totals.errors;
        m_filter.claimMasters();
        printError(report, selected, error);
        testCase.fail(causeOf(error, Verbosity::Normal));
      }
    }
    if (!isVerified) {
      testCase.note("Not verified: no selected format has a master.");
    }
  }

  /// Whether the report has masters of the format.
  bool verifyFormat(const std::string& report, const SelectedFormat& selected,
                    const HarnessLog::TestCase& testCase) {
    if (selected.runsScript) {
      const std::size_t pairs = selected.engine->findPairs(report).size();
      if (pairs == 0) {
        return false;  // spares the descriptors
      }
      if (const auto broken = m_broken.find(selected.format); broken != m_broken.end()) {
        broken->second.pairs += pairs;
        m_filter.claimMasters();
        testCase.fail(counted(pairs, "pair") + " not compared: " + broken->second.problem);
        return true;
      }
    }
    const OutputCapture::Session catching(m_capture, selected.runsScript);
    m_registry.verifyOutput(selected.format->format, report.c_str(), nullptr);
    requireStartedScripts();
    return m_filter.countSinceStart() > 0;
  }

  void reportBrokenFormats() {
    for (const auto& [format, broken] : m_broken) {
      if (broken.pairs > 0) {
        m_totals.uncompared.push_back(counted(broken.pairs, "pair") + " of format " +
                                      std::string(format->name) +
                                      " not compared: " + broken.problem);
      }
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
                  const std::exception& error) {
    std::cout << m_palette.paint(Color::Red, "error") << "    " << printable(report) << " ("
              << selected.format->name << "): " << printable(causeOf(error, m_verbosity)) << '\n';
    const std::vector<OrvFilePair> pairs = findPairs(report, selected);
    const std::size_t reached = m_filter.countSinceStart();
    if (reached < pairs.size()) {
      std::cout << "          at " << printable(pairs[reached].master) << " -> "
                << printable(pairs[reached].actual) << "; " << pairs.size() - reached - 1
                << " more of this format not compared\n";
    }
    if (const std::string output = m_capture.take(); m_verbosity != Verbosity::Quiet) {
      printForeign(output);
    }
  }

  const std::vector<SelectedFormat>& m_formats;
  const std::vector<std::string>& m_reports;
  const Verbosity m_verbosity;
  const Palette& m_palette;
  ResultPrinter& m_printer;
  OutputCapture m_capture;
  OrvDiffEngineRegistry m_registry;
  PairFilter m_filter;
  CaughtResults m_results;
  std::map<const OrvDiffFormat*, BrokenFormat> m_broken;
  std::optional<HarnessResults> m_harnessResults;
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
  } catch (const CommandError& unwritten) {
    shortfalls.emplace_back(unwritten.what());
  }
  try {
    if (harnessLog) {
      harnessLog->finish(interrupted ? std::vector<std::string>{"interrupted"} : shortfalls);
    }
  } catch (const CommandError& unwritten) {
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
  Run run(formats, found, options, palette, printer);
  std::optional<StrictPasses> summaryResults;
  if (summary) {
    run.addListener(summaryResults.emplace(summary->listener()));
  }
  if (options.saveNormalized) {
    run.addListener(saver);
  }
  if (harnessLog) {
    harnessLog->start();
    run.logTo(*harnessLog);
  }
  run.verify(options.verbosity != Verbosity::Quiet && canShowProgress());
  RunTotals& totals = run.totals();
  totals.unsaved = saver.unsavedFiles();
  std::vector<std::string> shortfalls = shortfallsOf(totals, options.allowNone);
  finishFiles(summary, harnessLog, totals.interrupted, shortfalls);
  printClosingSummary(totals, shortfalls, options.verbosity, palette);
  printHint(totals);
  return exitStatusOf(totals, shortfalls);
}
