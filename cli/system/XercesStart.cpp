#include "cli/system/XercesStart.h"

#include <cstdlib>
#include <iostream>
#include <new>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PanicHandler.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLException.hpp>

#include "cli/system/CommandError.h"
#include "cli/system/ExitStatus.h"

namespace {

/// Takes the place of Xerces' own handler, which ends the process with a status that is not ours.
class PanicReporter : public xercesc::PanicHandler {
 public:
  ~PanicReporter() override;
  void panic(const PanicReasons reason) override {
    std::cout.flush();
    std::cerr << "orvdiff: the XML parser library failed: " << getPanicReasonString(reason) << '\n';
    std::_Exit(kExitTrouble);  // Xerces counts on this call not to return
  }
};

PanicReporter::~PanicReporter() = default;

PanicReporter s_panicReporter;

}  // namespace

void startXerces() {
  try {
    xercesc::XMLPlatformUtils::Initialize(xercesc::XMLUni::fgXercescDefaultLocale, nullptr,
                                          &s_panicReporter);
  } catch (const xercesc::OutOfMemoryException&) {
    throw std::bad_alloc();
  } catch (const xercesc::XMLException&) {
    throw CommandError("the XML parser library could not be started");
  }
}
