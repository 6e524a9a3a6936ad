// Verifies a report run of Acme's own class, and catches an error of Acme's own family.
//
// usage, in a folder whose "Masters" holds the masters: own_host REPORT PAGE-TEXT

#include <iostream>

#include "acme/Core.h"
#include "orvdiff/orvdiff.h"

class Console : public OrvDiffListener {
 public:
  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResult& result) override {
    std::cout << (result.isPassed() ? "right  " : "WRONG  ") << result.getActualName() << '\n';
  }
};

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: own_host REPORT PAGE-TEXT\n";
    return 2;
  }
  OrvTestInfo run;
  run.pages["../webcontent/bi/v5DebugHTML/R.html"] << argv[2] << std::ends;

  OrvDiffHtmlFileEngine pages(nullptr);
  Console console;
  OrvDiffEngineRegistry registry;
  registry.registerDiffEngine(Html, &pages);
  registry.addListener(&console);
  registry.verifyOutput(Html, argv[1], &run);

  registry.addListener(nullptr);  // a mistake, and so an error
  try {
    registry.verifyOutput(Html, argv[1], &run);
  } catch (const VELThrowable& error) {
    std::cout << "ticket " << error.ticket() << ": " << error.story() << '\n';
  }
}
