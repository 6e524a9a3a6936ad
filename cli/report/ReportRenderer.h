#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/record/PairRecord.h"
#include "cli/record/RunRecord.h"
#include "cli/report/ChangeGroups.h"
#include "cli/report/Packed.h"

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

/// A whole report.
class ReportDocument {
 public:
  /// Of one piece. Not explicit: that is what most reports are.
  ReportDocument(std::string text) : m_head(std::move(text)) {}  // NOLINT
  /// With a long middle, which is kept packed.
  ReportDocument(std::string head, std::shared_ptr<const PackedText> body, std::string tail)
      : m_head(std::move(head)), m_body(std::move(body)), m_tail(std::move(tail)) {}

  /// Hands the text over, piece by piece. Raises `std::bad_alloc`.
  void write(const std::function<void(std::string_view)>& take) const {
    take(m_head);
    if (m_body != nullptr) {
      m_body->write(take);
    }
    take(m_tail);
  }

 private:
  std::string m_head;
  std::shared_ptr<const PackedText> m_body;
  std::string m_tail;
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
  virtual ReportDocument finish(const ReportSummary& summary) = 0;
};
