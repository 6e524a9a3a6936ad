// A test script to copy and change. It runs three test cases, writes its log to results.mxr in the
// working folder, and prints the results table to the console.
//
// The second test case fails on purpose, to show the dump of a difference.

#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "orvdiff/harness/MOXTestHarness.h"

namespace {

void writeFile(const char* name, const std::string& content) {
  std::ofstream(name, std::ios::binary) << content;
}

/// Stands for a report run.
std::string runReport(const std::string& currency) {
  std::string rows = "region;revenue;currency\n";
  for (const char* region : {"North", "East", "South", "West"}) {
    rows += std::string(region) + ";1000;" + currency + "\n";
  }
  return rows;
}

/// A check of your own: count the verdict, then write the line.
void check(MOXTestHarness& harness, const std::string& what, bool holds) {
  if (holds) {
    harness.logCheckPass();
    harness.logMessage(("PASSED: " + what + "\n").c_str(), MOXLogLevel::Concise);
  } else {
    harness.logCheckFail();
    harness.logMessage((">>  FAILED: " + what + "\n").c_str(), MOXLogLevel::Minimal);
  }
}

void checkUnchangedReport(MOXTestHarness& harness) {
  harness.startTest("Unchanged report", "The run in euros still gives its master.");
  writeFile("master.csv", runReport("EUR"));
  writeFile("actual.csv", runReport("EUR"));
  harness.check_file("revenue in euros", "actual.csv", "master.csv");
  harness.endTest();
}

void checkChangedReport(MOXTestHarness& harness) {
  harness.startTest("Changed report", "The run in pounds is held to the master in euros.");
  writeFile("actual.csv", runReport("GBP"));
  harness.check_file("revenue in pounds", "actual.csv", "master.csv");
  harness.endTest();
}

void checkCost(MOXTestHarness& harness) {
  harness.startTest("Cost", "Time and memory of a thousand runs.");
  constexpr std::size_t kRuns = 1000;
  std::vector<std::string> kept;
  harness.startMemory();
  harness.startTimer();
  kept.reserve(kRuns);
  while (kept.size() < kRuns) {
    kept.push_back(runReport("EUR"));
  }
  harness.stopTimer();
  harness.stopMemory();
  harness.getTimer(false, false);
  check(harness, "a thousand runs take at most 10 MB", harness.getMemory() <= 10'000'000);
  harness.endTest();
}

}  // namespace

int main() {
  MOXTestHarness& harness = *MOXTestHarness::getInstance();
  harness.setLogLevel(MOXLogLevel::Normal);
  if (!harness.openLogFile("results.mxr", false)) {
    return EXIT_FAILURE;
  }
  harness.startScript("Revenue report");
  checkUnchangedReport(harness);
  checkChangedReport(harness);
  checkCost(harness);
  return harness.endScript(true) == 1 ? EXIT_SUCCESS : EXIT_FAILURE;
}
