// "Us" in the side-by-side runs: one piece of the library's work with as little around it as can
// be.
//
// usage: orvdiff_verify_pairs suite FORMAT FOLDER     verifies every report, *.xml, in FOLDER
//        orvdiff_verify_pairs numbers MASTER ACTUAL   compares two texts by their numbers
//        orvdiff_verify_pairs check ACTUAL EXPECTED   the test harness's check of two files
//
// Prints how many pairs passed and how many did not; the exit status is 0 when all passed.

#include <dirent.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "orvdiff/compare/OrvDiffFloatComparison.h"
#include "orvdiff/orvdiff.h"

namespace {

class Tally : public OrvDiffListener {
 public:
  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResult& result) override { count(result.isPassed()); }

  void count(bool passed) { ++(passed ? m_passed : m_failed); }

  int report() const {
    std::printf("%d passed, %d did not\n", m_passed, m_failed);
    return m_passed > 0 && m_failed == 0 ? 0 : 1;
  }

 private:
  int m_passed = 0;
  int m_failed = 0;
};

std::vector<std::string> reportsIn(const std::string& folder) {
  std::vector<std::string> reports;
  DIR* const open = opendir(folder.c_str());
  while (const dirent* const entry = open != nullptr ? readdir(open) : nullptr) {
    const std::string_view name = entry->d_name;
    if (name.size() > 4 && name.substr(name.size() - 4) == ".xml") {
      reports.push_back(folder + '/' + entry->d_name);
    }
  }
  if (open != nullptr) {
    closedir(open);
  }
  std::sort(reports.begin(), reports.end());
  return reports;
}

void verifySuite(const std::string& formatName, const std::string& folder, Tally& tally) {
  const OrvDiffFormat* const format = OrvDiffFormats::find(formatName);
  if (format == nullptr) {
    throw std::invalid_argument("no such format: " + formatName);
  }
  const std::unique_ptr<OrvDiffFileEngine> engine = format->createEngine({});
  OrvDiffEngineRegistry registry;
  registry.registerDiffEngine(format->format, engine.get());
  registry.addListener(&tally);
  for (const std::string& report : reportsIn(folder)) {
    registry.verifyOutput(format->format, report.c_str(), nullptr);
  }
}

OrvTextBuffer read(const char* path) {
  OrvFileHandle file(path, "r");
  if (file == nullptr) {
    throw std::invalid_argument(std::string("cannot open ") + path);
  }
  return OrvDiffLib::slurpFile(file);
}

void compareNumbers(const char* master, const char* actual, Tally& tally) {
  const OrvTextBuffer masterText = read(master);
  const OrvTextBuffer actualText = read(actual);
  const std::unique_ptr<OrvDiffResult> result(OrvDiffFloatComparison().performStringDiff(
      master, actual, masterText.get(), actualText.get()));
  tally.count(result->isPassed());
}

void checkFile(const char* actual, const char* expected, Tally& tally) {
  MOXTestHarness* const harness = MOXTestHarness::getInstance();
  harness->startScript(nullptr);
  harness->startTest("check", nullptr);
  tally.count(harness->check_file("equal files", actual, expected) == 1);
  harness->endScript(false);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string_view work = argc == 4 ? argv[1] : "";
  Tally tally;
  OrvXerces::initializeOnDemand([](const char*) { std::abort(); });
  try {
    if (work == "suite") {
      verifySuite(argv[2], argv[3], tally);
    } else if (work == "numbers") {
      compareNumbers(argv[2], argv[3], tally);
    } else if (work == "check") {
      checkFile(argv[2], argv[3], tally);
    } else {
      std::fputs("usage: orvdiff_verify_pairs suite|numbers|check ONE OTHER\n", stderr);
      return 2;
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "orvdiff_verify_pairs: %s\n", error.what());
    return 2;
  }
  return tally.report();
}
