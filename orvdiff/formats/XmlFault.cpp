#include "orvdiff/formats/XmlFault.h"

#include <cstring>

#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/formats/OrvXerces.h"
#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

void (*s_onPanic)(const char* reason) = nullptr;  ///< null: the host initialises Xerces

std::shared_ptr<XmlParser> createParser(XmlDocumentKind kind) {
  const orvdiff::detail::XmlModule& module = orvdiff::detail::xmlModule();
  if (s_onPanic != nullptr) {
    module.initializeXerces(s_onPanic);
  }
  return module.createParser(kind);
}

}  // namespace

void OrvXerces::initializeOnDemand(void (*onPanic)(const char* reason)) {
  VEL_ASSERT(onPanic);
  s_onPanic = onPanic;
}

OrvDiffResult* findXmlFault(
    std::shared_ptr<XmlParser>& parser, XmlDocumentKind kind, const std::string& fileName,
    const char* inMemoryText,
    const std::function<void(const char* bytes, std::uint64_t length)>& parse) {
  OrvTextBuffer buffer;
  std::uint64_t length = 0;
  if (inMemoryText == nullptr) {
    OrvFileHandle file(fileName.c_str(), "rt");
    OrvDiffResult* const missing = OrvDiffLib::checkOpenFiles(fileName, fileName, file, file);
    if (missing != nullptr) {
      return missing;
    }
    buffer = OrvDiffLib::slurpFile(file);
    const long end = std::ftell(file);  // the file may have grown since: only what was read counts
    VEL_ASSERT_NAMED(end >= 0, "Unable to read all of the contents of file ");
    length = static_cast<std::uint64_t>(end);
  } else {
    length = std::strlen(inMemoryText);
  }
  const char* const bytes = inMemoryText != nullptr ? inMemoryText : buffer.get();
  if (parser == nullptr || !parser->isUsable()) {
    parser = createParser(kind);
  }
  if (parser->passes(fileName, [&] { parse(bytes, length); })) {
    return nullptr;
  }
  return velNew<OrvDiffResultFail>(VEL_HERE, fileName, fileName);
}
