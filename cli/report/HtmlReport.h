#pragma once

#include "cli/report/PagePairs.h"
#include "cli/report/PagePictures.h"
#include "cli/report/ReportRenderer.h"

/// The run as a page for a browser: one file that needs nothing else and asks for nothing. Its
/// program, in cli/report/html, makes what is seen from the data that stand in the file, all of
/// which comes in base64: no output under test can become part of the page.
class HtmlReport : public ReportRenderer {
 public:
  void add(const PairRecord& pair, const FileReader& read) override;
  ReportDocument finish(const ReportSummary& summary) override;

 private:
  PagePairs m_pairs;
  PagePictures m_pictures;
};
