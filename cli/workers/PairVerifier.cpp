#include "cli/workers/PairVerifier.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <exception>
#include <iostream>
#include <optional>
#include <utility>

#include "cli/suite/ComparisonScript.h"
#include "cli/terminal/ErrorCause.h"
#include "cli/workers/ComparisonNotes.h"
#include "cli/workers/LostPair.h"
#include "cli/workers/MaskWatch.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

// A step's number holds the format in its upper half. In the lower half, 2n + 1 is the n-th pair,
// and 2n listing the masters to go on with that pair; the last number says that listing has failed.
constexpr unsigned kFormatShift = 32;
constexpr std::uint64_t kListingFailed = 0xFFFFFFFF;

std::uint64_t stepOf(std::uint64_t format, std::uint64_t index) {
  return (format << kFormatShift) + index;
}

/// Processor time of this process and, if `withChildren`, of those that it has waited for.
double processorSeconds(bool withChildren) {
  timespec own = {};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &own);
  rusage children = {};
  if (withChildren) {
    getrusage(RUSAGE_CHILDREN, &children);
  }
  return static_cast<double>(own.tv_sec + children.ru_utime.tv_sec + children.ru_stime.tv_sec) +
         static_cast<double>(own.tv_nsec) * 1e-9 +
         static_cast<double>(children.ru_utime.tv_usec + children.ru_stime.tv_usec) * 1e-6;
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
    PairResult unknownPair;
    unknownPair.record.format = selected.format->name;
    unknownPair.record.subFolder = selected.subFolder;
    m_formats.push_back({&selected, scriptProblem(*selected.engine), packPair(unknownPair)});
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
  link.begin(std::max(stepOf(format, 0), firstStep), m_formats[format].listing);
  std::vector<OrvFilePair> pairs;
  try {
    pairs = findPairs(report, *m_formats[format].selected, m_settings.onlyPairs);
    link.end();
  } catch (const std::exception& error) {
    PairResult result = start(task, format, {});
    result.record.verdict = Verdict::Error;
    result.record.message = causeOf(error, m_settings.verbosity);
    link.begin(stepOf(format, kListingFailed), m_formats[format].listing);
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
    if (isLeftToAnother(*m_formats[format].selected, pairs[i].master)) {
      continue;
    }
    PairResult result = start(task, format, pairs[i]);
    result.countsForReport = owner == PairOwners::Owner::Itself;
    link.begin(step, packPair(result));
    compare(m_formats[format], pairs[i], result);
    addDifference(*m_formats[format].selected, result, link);
    link.send(packPair(result));
  }
}

bool PairVerifier::isLeftToAnother(const SelectedFormat& format, const std::string& master) const {
  return m_settings.pictures != nullptr &&
         m_settings.pictures->isLeftToAnother(
             format, std::string_view(master).substr(master.rfind('/') + 1));
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
  const auto start = std::chrono::steady_clock::now();
  const bool hasScript = runsScript(*format.selected->engine);
  const double processorStart = m_settings.keepFacts ? processorSeconds(hasScript) : 0;
  std::optional<ComparisonNotes> notes;
  if (m_settings.keepFacts) {
    notes.emplace(pair);
  }
  const MaskWatch watch(m_settings.maskLimits);
  result = outcomeOf(format, pair, result);
  PairRecord& record = result.record;
  record.printed = shortened(m_capture.take());
  record.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  if (notes) {
    record.cpuSeconds = processorSeconds(hasScript) - processorStart;
    notes->addTo(record);
  } else if (m_settings.namesRules) {
    record.rules = watch.rules();
  }
  if (record.verdict == Verdict::Passed) {
    watch.addMaskTo(record, *format.selected->engine);
  }
}

/// Sends the verdict first: finding out how files differ takes time and memory of its own, and
/// whatever it comes to, it must not cost the pair its verdict.
void PairVerifier::addDifference(const SelectedFormat& format, PairResult& result,
                                 WorkerLink& link) const {
  if (m_settings.differences && isAboutFiles(result.record.verdict)) {
    link.sendSoFar(packPair(result));
    result.record.difference =
        differenceOf(*format.format, *format.engine, result.record, *m_settings.differences);
  }
}

/// `known` with what came of the comparison.
PairResult PairVerifier::outcomeOf(const Format& format, const OrvFilePair& pair,
                                   const PairResult& known) const {
  PairResult result = known;
  try {
    if (isStale(pair, result)) {
      return result;
    }
    const std::unique_ptr<const OrvDiffResult> outcome(
        format.selected->engine->comparePair(pair, nullptr));
    requireStartedScripts();
    describeResult(*outcome, format.selected->format->format, result);
  } catch (const std::exception& error) {
    result = known;
    result.record.verdict = Verdict::Error;
    result.record.message = causeOf(error, m_settings.verbosity);
  }
  return result;
}

/// The verdict on a stale output does not depend on what it holds.
bool PairVerifier::isStale(const OrvFilePair& pair, PairResult& result) const {
  const auto why =
      m_settings.newerThan ? whyStale(pair.actual, *m_settings.newerThan) : std::nullopt;
  if (why) {
    describeResult(OrvDiffResultFail(pair.master, pair.actual), std::nullopt, result);
    result.record.verdict = Verdict::Stale;
    result.record.message = *why;
  }
  return why.has_value();
}

PairResult PairVerifier::describeLost(std::string_view description) const {
  PairResult pair = description.empty() ? PairResult() : unpackPair(description);
  if (m_settings.keepFacts && !pair.record.master.empty() && !isCompared(pair.record)) {
    ComparisonNotes({pair.record.master, pair.record.output}).addTo(pair.record);
  }
  return pair;
}

std::uint64_t PairVerifier::stepAfter(std::uint64_t step) {
  return isListing(step) ? stepOf((step >> kFormatShift) + 1, 0) : step + 1;
}

bool PairVerifier::isListing(std::uint64_t step) {
  return step % 2 == 0;
}
