// Validates each file named on standard input, one name a line, as context metadata: prints "pass"
// or "fail", a tab and the name, after whatever block the validation printed.

#include <iostream>
#include <memory>
#include <string>
#include <xercesc/util/PlatformUtils.hpp>

#include "orvdiff/formats/OrvDiffCtxMetadataXmlFileEngine.h"
#include "orvdiff/registry/OrvDiffResult.h"

int main() {
  xercesc::XMLPlatformUtils::Initialize();
  {
    OrvDiffCtxMetadataXmlFileEngine engine(nullptr);
    std::string name;
    while (std::getline(std::cin, name)) {
      // Its own master: what validates passes.
      const std::unique_ptr<OrvDiffResult> result(engine.performDiff(name, name, nullptr));
      std::cout << (result->isPassed() ? "pass\t" : "fail\t") << name << std::endl;
    }
  }
  xercesc::XMLPlatformUtils::Terminate();
}
