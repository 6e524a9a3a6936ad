#include "cli/record/PairResult.h"

#include <sys/stat.h>

#include <fstream>

#include "cli/record/Archive.h"
#include "cli/suite/MissingReason.h"
#include "cli/terminal/Excerpt.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/registry/OrvDiffListener.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

using Kind = PairResult::Kind;

std::optional<std::string> copyOf(const char* text) {
  return text != nullptr ? std::optional<std::string>(text) : std::nullopt;
}

const char* orEmpty(const char* text) {
  return text != nullptr ? text : "";
}

/// Whether the file has no third line, which is the first that is read of a VMD report.
bool isWithoutStatistics(const std::string& fileName) {
  std::ifstream file(fileName, std::ios::binary);
  std::string line;
  int lines = 0;
  while (lines < 3 && std::getline(file, line)) {
    ++lines;
  }
  return lines < 3;
}

bool isEmpty(const std::string& fileName) {
  struct stat status = {};
  return stat(fileName.c_str(), &status) == 0 && status.st_size == 0;
}

/// Fills a pair's result in from the library's.
class Describer : public OrvDiffListener {
 public:
  explicit Describer(PairResult& pair) : m_pair(pair) {}

  using OrvDiffListener::comparisonNotification;

  void comparisonNotification(const OrvDiffResultPass& result) override {
    const auto* const cut = dynamic_cast<const OrvDiffResultPassUpToNul*>(&result);
    if (cut == nullptr) {
      return set(result, Verdict::Passed, Kind::Pass);
    }
    set(result, Verdict::Partly, Kind::PassUpToNul);
    m_pair.namedFile = cut->getCutFile();
    m_pair.record.message =
        m_pair.namedFile + " contains a NUL byte; only the text before it was compared";
  }

  void comparisonNotification(const OrvDiffResultFail& result) override {
    set(result, Verdict::Failed, Kind::Fail);
  }

  void comparisonNotification(const OrvDiffResultFailDiff& result) override {
    set(result, Verdict::Differs, Kind::FailDiff);
  }

  void comparisonNotification(const OrvDiffResultFailDiffNormalized& result) override {
    set(result, Verdict::Differs, Kind::FailDiffNormalized);
    m_pair.normalizedMaster = copyOf(result.getNormalizedMaster());
    m_pair.normalizedOutput = copyOf(result.getNormalizedActual());
    const char* const master = orEmpty(result.getNormalizedMaster());
    const std::size_t position = startOfCharacter(master, result.getDiffPosition());
    const TextPosition place = locate(master, position);
    m_pair.record.at = DifferencePlace{result.getDiffPosition(), place.line, place.column};
  }

  void comparisonNotification(const OrvDiffResultFailFileMissing& result) override {
    set(result, Verdict::Missing, Kind::FailFileMissing);
    m_pair.namedFile = result.getMissingFile();
    const bool isMaster = m_pair.namedFile == result.getMasterName();
    const bool isOutput = m_pair.namedFile == result.getActualName();
    m_pair.record.message = std::string(isMaster && isOutput ? "it "
                                        : isMaster           ? "the master "
                                                             : "the actual output ") +
                            missingReason(m_pair.namedFile);
  }

 private:
  void set(const OrvDiffResult& result, Verdict verdict, Kind kind) {
    m_pair.resultMaster = result.getMasterName();
    m_pair.resultOutput = result.getActualName();
    m_pair.record.verdict = verdict;
    m_pair.kind = kind;
  }

  PairResult& m_pair;
};

OrvTextBuffer copyOf(const std::optional<std::string>& text) {
  return text ? OrvDiffLib::strdupnew(text->c_str()) : nullptr;
}

}  // namespace

// Where the archive finds them: beside the types.

template <typename Archive>
void describe(Archive& archive, FileFacts& facts) {
  archive(facts.size, facts.hash, facts.normalizedHash, facts.evidence);
}

template <typename Archive>
void describe(Archive& archive, DifferencePlace& place) {
  archive(place.byte, place.line, place.column);
}

template <typename Archive>
void describe(Archive& archive, DiffSpan& span) {
  archive(span.kind, span.text, span.rule);
}

template <typename Archive>
void describe(Archive& archive, DiffLine& line) {
  archive(line.kind, line.masterLine, line.outputLine, line.isCutBefore, line.isCutAfter,
          line.omitted, line.spans);
}

template <typename Archive>
void describe(Archive& archive, DiffHunk& hunk) {
  archive(hunk.place, hunk.groups, hunk.lines);
}

template <typename Archive>
void describe(Archive& archive, DiffChange& change) {
  archive(change.group, change.removed, change.added, change.count);
}

template <typename Archive>
void describe(Archive& archive, Difference& difference) {
  archive(difference.kind, difference.notes, difference.hunks, difference.hunkCount,
          difference.isCoarse, difference.changes);
}

template <typename Archive>
void describe(Archive& archive, OutsizedMask& mask) {
  archive(mask.isInOutput, mask.rule, mask.bytes, mask.percent, mask.firstLine, mask.lastLine);
}

template <typename Archive>
void describe(Archive& archive, KnownReason& reason) {
  archive(reason.why, reason.until, reason.link, reason.place);
}

template <typename Archive>
void describe(Archive& archive, KnownCause& known) {
  archive(known.verdict, known.reasons);
}

template <typename Archive>
void describe(Archive& archive, PairRecord& record) {
  archive(record.report, record.format, record.subFolder, record.master, record.output,
          record.masterPath, record.outputPath, record.verdict, record.message, record.at,
          record.seconds, record.cpuSeconds, record.masterFile, record.outputFile, record.known,
          record.mask, record.rules, record.printed, record.difference);
}

template <typename Archive>
void describe(Archive& archive, PairResult& pair) {
  archive(pair.record, pair.countsForReport, pair.comparedNothing, pair.kind, pair.resultMaster,
          pair.resultOutput, pair.namedFile, pair.normalizedMaster, pair.normalizedOutput);
}

void describeResult(const OrvDiffResult& result, std::optional<OrvOutputFormat> format,
                    PairResult& pair) {
  Describer describer(pair);
  result.notifyListener(describer);
  if (pair.record.verdict == Verdict::Passed && format == OrvOutputFormat::Vmd &&
      (isWithoutStatistics(pair.resultMaster) || isWithoutStatistics(pair.resultOutput))) {
    pair.record.message =
        "nothing was compared: a VMD report of fewer than three lines has no statistics";
  } else if (pair.record.verdict == Verdict::Passed && isEmpty(pair.resultOutput)) {
    pair.record.message = "nothing was compared: the output is empty, as the master says";
  }
  pair.comparedNothing = pair.record.verdict == Verdict::Passed && !pair.record.message.empty();
}

std::unique_ptr<const OrvDiffResult> rebuildResult(const PairResult& pair) {
  const std::string& master = pair.resultMaster;
  const std::string& output = pair.resultOutput;
  switch (pair.kind) {
    case Kind::Pass:
      return std::make_unique<OrvDiffResultPass>(master, output);
    case Kind::PassUpToNul:
      return std::make_unique<OrvDiffResultPassUpToNul>(master, output, pair.namedFile);
    case Kind::Fail:
      return std::make_unique<OrvDiffResultFail>(master, output);
    case Kind::FailDiff:
      return std::make_unique<OrvDiffResultFailDiff>(master, output);
    case Kind::FailDiffNormalized: {
      OrvTextBuffer masterText = copyOf(pair.normalizedMaster);
      OrvTextBuffer outputText = copyOf(pair.normalizedOutput);
      auto result = std::make_unique<OrvDiffResultFailDiffNormalized>(
          master, output, masterText.get(), outputText.get(), pair.record.at->byte);
      masterText.release();
      outputText.release();
      return result;
    }
    case Kind::FailFileMissing:
      return std::make_unique<OrvDiffResultFailFileMissing>(master, output, pair.namedFile);
    case Kind::None:
      break;
  }
  return nullptr;
}

std::string packPair(const PairResult& pair) {
  std::string bytes;
  ArchiveWriter archive(bytes);
  archive(pair);
  return bytes;
}

PairResult unpackPair(std::string_view bytes) {
  PairResult pair;
  ArchiveReader archive(bytes);
  archive(pair);
  return pair;
}
