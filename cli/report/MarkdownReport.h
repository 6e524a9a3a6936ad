#pragma once

#include "cli/report/ReportRenderer.h"
#include "cli/report/Topics.h"

/// The run in a few screens of Markdown, for a comment or a job's summary: never longer than the
/// 65,536 characters that the strictest server takes. Nothing of an output can become markup: it
/// stands in code only, behind a fence longer than any within.
class MarkdownReport : public ReportRenderer {
 public:
  void add(const PairRecord& pair, const FileReader& read) override;
  ReportDocument finish(const ReportSummary& summary) override;

 private:
  std::string topicsText(const std::vector<ChangeGroup>& groups) const;
  std::string pairsText() const;

  Topics m_topics;
  std::string m_rows;  ///< of the table of pairs
  std::size_t m_shown = 0;
  std::size_t m_failed = 0;
};
