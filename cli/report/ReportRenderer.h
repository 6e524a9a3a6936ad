#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/record/PairRecord.h"
#include "cli/record/RunRecord.h"
#include "cli/report/ChangeGroups.h"

/// Reads the bytes of one of the two files of a pair, as they were when they were compared. Raises
/// `CommandError`, saying why, when they cannot be had any more.
using FileReader = std::function<std::string(const std::string& name, const FileFacts& facts)>;

/// What a report says of the run as a whole.
struct ReportSummary {
  RunRecord run;  ///< `pairs` and `totals` are those of the pairs added, also after an interruption
  std::vector<ChangeGroup> groups;   ///< rarest first
  std::vector<std::string> account;  ///< what was not compared, and why: a sentence each
  std::vector<std::string> records;  ///< folders, absolute; several: of shards; none: not recorded
};

/// Turns a run into one document for people or programs. One class for each kind of document; the
/// table in ReportKinds.cpp names them.
class ReportRenderer {
 public:
  ReportRenderer() = default;
  virtual ~ReportRenderer() = default;
  ReportRenderer(const ReportRenderer&) = delete;
  ReportRenderer& operator=(const ReportRenderer&) = delete;

  /// Takes in a pair. Called for every pair, in the order of the run. `read` may be kept and called
  /// until the renderer is destroyed.
  virtual void add(const PairRecord& pair, const FileReader& read) = 0;

  /// The whole document. Called once, after the last pair.
  virtual std::string finish(const ReportSummary& summary) = 0;
};
