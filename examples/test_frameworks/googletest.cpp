// The reports of a suite as tests of GoogleTest: each report a test, each pair an expectation.
//
// usage, from the working folder of the report server: orvdiff_googletest [options of GoogleTest]

#include <gtest/gtest.h>

#include <string>

#include "orvdiff/bridges/OrvDiffGoogleTestListener.h"
#include "orvdiff/orvdiff.h"
#include "reports.h"

class Report : public testing::TestWithParam<std::string> {};

TEST_P(Report, OutputsMatchTheirMasters) {
  OrvDiffHtmlFileEngine pages(nullptr);
  OrvDiffCsvFileEngine tables(nullptr);
  OrvDiffGoogleTestListener expectations;

  OrvDiffEngineRegistry registry;
  registry.registerDiffEngine(OrvOutputFormat::Html, &pages);
  registry.registerDiffEngine(OrvOutputFormat::Csv, &tables);
  registry.addListener(&expectations);
  registry.verifyOutput(OrvOutputFormat::Html, GetParam().c_str(), nullptr);
  registry.verifyOutput(OrvOutputFormat::Csv, GetParam().c_str(), nullptr);

  if (expectations.pairs() == 0) {
    GTEST_SKIP() << "no page and no table among its masters";
  }
}

INSTANTIATE_TEST_SUITE_P(Suite, Report, testing::ValuesIn(reportsBelow("../suite")));
