// A host in thirty lines: verifies a report of which one page exists only in memory.
//
// usage, from the demo suite's working folder (examples/demo/server/work): embedding LOG-FILE

#include <iostream>
#include <ostream>

#include "orvdiff/orvdiff.h"

class Console : public OrvDiffListener {
 public:
  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResultPass& result) override {
    std::cout << "right  " << result.getActualName() << '\n';
  }
  void comparisonNotification(const OrvDiffResult& result) override {
    std::cout << "WRONG  " << result.getActualName() << '\n';
  }
};

int main(int argc, char** argv) {
  OrvDiffHtmlFileEngine pages(nullptr);
  OrvDiffHtmlPngFileEngine pictures(nullptr);
  Console console;
  OrvDiffFileLog log(argc > 1 ? argv[1] : "summary.xml");

  OrvDiffEngineRegistry registry;
  registry.registerDiffEngine(OrvOutputFormat::Html, &pages);
  registry.registerDiffEngine(OrvOutputFormat::Html, &pictures);
  registry.addListener(&console);
  registry.addListener(&log);

  OrvTestInfo run;  // this page is in memory; if it fails, it is written to disk
  run.addOutput("../webcontent/bi/v5DebugHTML/Revenue_2.html", false)
      << "<html><body>Page 2 was rendered without its table.</body></html>" << std::ends;
  registry.verifyOutput(OrvOutputFormat::Html, "../suite/sales/Revenue.xml", &run);
}
