// The reports of a suite as a test of Catch2: each report a section, each pair an assertion.
// A report without pages fails, because the listener hears of nothing.
//
// usage, from the working folder of the report server: orvdiff_catch2 [options of Catch2]

#include "orvdiff/bridges/OrvDiffCatch2Listener.h"
#include "orvdiff/orvdiff.h"
#include "reports.h"

TEST_CASE("outputs match their masters") {
  const std::vector<std::string> reports = reportsBelow("../suite");
  REQUIRE_FALSE(reports.empty());
  for (const std::string& report : reports) {
    DYNAMIC_SECTION(report) {
      OrvDiffHtmlFileEngine pages(nullptr);
      OrvDiffCatch2Listener assertions;

      OrvDiffEngineRegistry registry;
      registry.registerDiffEngine(OrvOutputFormat::Html, &pages);
      registry.addListener(&assertions);
      registry.verifyOutput(OrvOutputFormat::Html, report.c_str(), nullptr);
    }
  }
}
