#pragma once

#include "cli/report/ReportRenderer.h"

/// The run, its groups and its pairs as one document for scripts; docs/report.schema.json describes
/// it.
class JsonReport : public ReportRenderer {
 public:
  void add(const PairRecord& pair, const FileReader& read) override;
  std::string finish(const ReportSummary& summary) override;

 private:
  std::string m_pairs;  ///< each as JSON, with commas between them
};
