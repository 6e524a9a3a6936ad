#include "cli/workers/PairVerifier.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <exception>
#include <filesystem>
#include <iostream>
#include <system_error>
#include <utility>

#include "cli/record/ContentHash.h"
#include "cli/suite/ComparisonScript.h"
#include "cli/terminal/ErrorCause.h"
#include "cli/workers/AppliedRules.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

// A step's number holds the format in its upper half. In the lower half, 2n + 1 is the n-th pair,
// and 2n listing the masters to go on with that pair; the last number says that listing has failed.
constexpr unsigned kFormatShift = 32;
constexpr std::uint64_t kListingFailed = 0xFFFFFFFF;

std::uint64_t stepOf(std::uint64_t format, std::uint64_t index) {
  return (format << kFormatShift) + index;
}

double seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

/// Processor time of this process and of those that it has waited for.
double processorSeconds() {
  double total = 0;
  for (const auto whose : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage usage = {};
    getrusage(whose, &usage);
    total += seconds(usage.ru_utime) + seconds(usage.ru_stime);
  }
  return total;
}

std::string resolve(const std::string& path) {
  std::error_code notThere;
  return std::filesystem::canonical(path, notThere);
}

/// The start of what was printed, if it is very long.
std::string shortened(std::string printed) {
  constexpr std::size_t kMost = std::size_t{1} << 20;
  if (printed.size() > kMost) {
    const std::string more = "\n[" + std::to_string(printed.size() - kMost) + " bytes more]\n";
    printed.resize(kMost);
    printed += more;
  }
  return printed;
}

FileFacts factsOf(const std::string& path) {
  FileFacts facts;
  if (const auto content = hashFile(path)) {
    facts.size = content->size;
    facts.hash = content->hash;
  }
  return facts;
}

}  // namespace

std::string pairKey(const std::string& report, const std::string& format,
                    const std::string& master) {
  return report + '\n' + format + '\n' + master;
}

PairVerifier::PairVerifier(const std::vector<std::string>& reports,
                           const std::vector<SelectedFormat>& formats, const PairOwners& owners,
                           Settings settings)
    : m_reports(reports), m_owners(owners), m_settings(std::move(settings)) {
  for (const SelectedFormat& selected : formats) {
    m_formats.push_back({&selected, scriptProblem(*selected.engine)});
  }
}

void PairVerifier::verify(std::uint32_t task, std::uint64_t firstStep, WorkerLink& link) {
  if (!m_catching) {
    std::cout.tie(nullptr);  // the parent's progress line is none of a worker's
    m_catching = std::make_unique<OutputCapture::Session>(m_capture, true);
  }
  for (std::uint64_t format = firstStep >> kFormatShift; format < m_formats.size(); ++format) {
    verifyFormat(task, format, firstStep, link);
  }
}

void PairVerifier::verifyFormat(std::uint32_t task, std::uint64_t format, std::uint64_t firstStep,
                                WorkerLink& link) {
  const OrvDiffFileEngine& engine = *m_formats[format].selected->engine;
  const std::string& report = m_reports[task];
  PairResult result = start(task, format, {});
  link.begin(std::max(stepOf(format, 0), firstStep), packPair(result));
  std::vector<OrvFilePair> pairs;
  try {
    pairs = engine.findPairs(report);
    link.end();
  } catch (const std::exception& error) {
    result.record.verdict = Verdict::Error;
    result.record.message = causeOf(error, m_settings.verbosity);
    link.begin(stepOf(format, kListingFailed), packPair(result));
    link.send(packPair(result));
    return;
  }
  for (std::uint64_t i = 0; i < pairs.size(); ++i) {
    const std::uint64_t step = stepOf(format, 2 * i + 1);
    const auto owner = step >= firstStep ? m_owners.ownerOf(report, pairs[i].master, engine)
                                         : PairOwners::Owner::Other;
    if (owner == PairOwners::Owner::Other) {
      continue;
    }
    result = start(task, format, pairs[i]);
    if (!isWanted(*m_formats[format].selected, result.record)) {
      continue;
    }
    result.countsForReport = owner == PairOwners::Owner::Itself;
    link.begin(step, packPair(result));
    compare(m_formats[format], pairs[i], result);
    link.send(packPair(result));
  }
}

bool PairVerifier::isWanted(const SelectedFormat& format, const PairRecord& pair) const {
  const std::string_view master = pair.master;
  if (m_settings.pictures != nullptr &&
      m_settings.pictures->isLeftToAnother(format, master.substr(master.rfind('/') + 1))) {
    return false;
  }
  return m_settings.onlyPairs == nullptr ||
         m_settings.onlyPairs->count(pairKey(pair.report, pair.format, pair.master)) != 0;
}

/// What is known of a pair before it is compared.
PairResult PairVerifier::start(std::uint32_t task, std::uint64_t format,
                               const OrvFilePair& pair) const {
  PairResult result;
  result.record.report = m_reports[task];
  result.record.format = m_formats[format].selected->format->name;
  result.record.subFolder = m_formats[format].selected->subFolder;
  result.record.master = pair.master;
  result.record.output = pair.actual;
  return result;
}

void PairVerifier::compare(const Format& format, const OrvFilePair& pair, PairResult& result) {
  if (!format.problem.empty()) {
    result.record.verdict = Verdict::NotRun;
    result.record.message = format.problem;
    return;
  }
  OrvDiffFileEngine& engine = *format.selected->engine;
  const PairResult known = result;
  const auto start = std::chrono::steady_clock::now();
  const double processorStart = m_settings.keepFacts ? processorSeconds() : 0;
  try {
    result = outcomeOf(*format.selected, pair);
    result.record.report = known.record.report;
    result.record.format = known.record.format;
    result.record.subFolder = known.record.subFolder;
    result.countsForReport = known.countsForReport;
  } catch (const std::exception& error) {
    result = known;
    result.record.verdict = Verdict::Error;
    result.record.message = causeOf(error, m_settings.verbosity);
  }
  result.record.master = pair.master;
  result.record.output = pair.actual;
  result.record.printed = shortened(m_capture.take());
  result.record.seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (m_settings.keepFacts) {
    result.record.cpuSeconds = processorSeconds() - processorStart;
    addFacts(engine, result);
  }
}

/// The verdict on a pair. That of a stale output does not depend on what it holds.
PairResult PairVerifier::outcomeOf(const SelectedFormat& format, const OrvFilePair& pair) const {
  if (m_settings.newerThan) {
    if (const auto why = whyStale(pair.actual, *m_settings.newerThan)) {
      PairResult stale = describeResult(OrvDiffResultFail(pair.master, pair.actual), std::nullopt);
      stale.record.verdict = Verdict::Stale;
      stale.record.message = *why;
      return stale;
    }
  }
  const std::unique_ptr<const OrvDiffResult> outcome(format.engine->comparePair(pair, nullptr));
  requireStartedScripts();
  return describeResult(*outcome, format.format->format);
}

/// What only a record wants to know; this reads both files again.
void PairVerifier::addFacts(const OrvDiffFileEngine& engine, PairResult& result) const {
  PairRecord& record = result.record;
  record.masterPath = resolve(record.master);
  record.outputPath = resolve(record.output);
  record.masterFile = factsOf(record.master);
  record.outputFile = factsOf(record.output);
  const bool isCompared = record.verdict == Verdict::Passed || record.verdict == Verdict::Partly ||
                          record.verdict == Verdict::Differs;
  if (isCompared && record.masterFile.hash != record.outputFile.hash) {
    applyRules(engine, record);
  }
}

PairResult PairVerifier::describeLost(std::string_view description) {
  return description.empty() ? PairResult() : unpackPair(description);
}

std::uint64_t PairVerifier::stepAfter(std::uint64_t step) {
  return isListing(step) ? stepOf((step >> kFormatShift) + 1, 0) : step + 1;
}

bool PairVerifier::isListing(std::uint64_t step) {
  return step % 2 == 0;
}
