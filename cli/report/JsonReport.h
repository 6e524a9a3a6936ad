#pragma once

#include "cli/report/ReportRenderer.h"

/// The run, its groups and its pairs as one document for scripts; docs/report.schema.json describes
/// it.
class JsonReport : public ReportRenderer {
 public:
  void add(const PairRecord& pair, const FileReader& read) override;
  ReportDocument finish(const ReportSummary& summary) override;

 private:
  std::shared_ptr<PackedText> m_pairs = std::make_shared<PackedText>();  ///< with commas between
};
