#include "cli/system/XercesStart.h"

#include <cstdlib>
#include <iostream>

#include "cli/system/ExitStatus.h"
#include "orvdiff/formats/OrvXerces.h"

namespace {

void reportPanic(const char* reason) {
  std::cout.flush();
  std::cerr << "orvdiff: the XML parser library failed: " << reason << '\n';
  std::_Exit(kExitTrouble);
}

}  // namespace

void startXercesOnDemand() {
  OrvXerces::initializeOnDemand(reportPanic);
}
