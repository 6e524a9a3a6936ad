// A host with a format of its own: server logs, compared as text, ignoring the time of day.
//
// usage, from the working folder of the report server: orvdiff_custom_engine REPORT...

#include <cstdlib>
#include <iostream>

#include "orvdiff/orvdiff.h"

class ServerLogEngine : public OrvDiffTextFormatEngine {
 public:
  explicit ServerLogEngine(const char* subFolder)
      : OrvDiffTextFormatEngine(subFolder, {"serverLog", "/ServerLog/", "*.log"}) {
    addCleansingPattern(&m_timeOfDay);
  }

 private:
  const OrvDiffNormalizationPattern m_timeOfDay{"\\d\\d:\\d\\d:\\d\\d", "hh:mm:ss"};
};

class Console : public OrvDiffListener {
 public:
  using OrvDiffListener::comparisonNotification;
  void comparisonNotification(const OrvDiffResult& result) override {
    std::cout << (result.isPassed() ? "right  " : "WRONG  ") << result.getActualName() << '\n';
  }
};

int main(int argc, char** argv) {
  constexpr OrvOutputFormat kServerLog{1000};  // any value that the library does not use
  ServerLogEngine engine(nullptr);
  Console console;
  OrvDiffEngineRegistry registry;
  registry.registerDiffEngine(kServerLog, &engine);
  registry.addListener(&console);
  for (int i = 1; i < argc; ++i) {
    registry.verifyOutput(kServerLog, argv[i], nullptr);
  }
  return EXIT_SUCCESS;
}
