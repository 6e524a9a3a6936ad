#include "orvdiff/formats/OrvDiffWellFormedXmlFileEngine.h"

#include "orvdiff/formats/XmlValidation.h"
#include "orvdiff/platform/VELDowncastSize.h"

namespace {

/// The line that the error for a text that is too long carries; hosts know it.
constexpr int kTextTooLongLine = 139;

}  // namespace

OrvDiffWellFormedXmlFileEngine::OrvDiffWellFormedXmlFileEngine(const char* subFolder,
                                                               const OrvFormatLayout& layout,
                                                               const char* unit,
                                                               XmlErrorHandler& errorHandler)
    : OrvDiffTextFormatEngine(subFolder, layout),
      m_unit(unit),
      m_parser(DOM_ParserImpl::create(errorHandler, DOM_ParserImpl::Val_Never)) {}

OrvDiffWellFormedXmlFileEngine::~OrvDiffWellFormedXmlFileEngine() = default;

OrvDiffResult* OrvDiffWellFormedXmlFileEngine::performDiff(const std::string& masterName,
                                                           const std::string& actualName,
                                                           std::strstream* inMemoryOutput) {
  OrvDiffResult* const fault = performValidation(actualName);
  return fault != nullptr
             ? fault
             : OrvDiffTextFormatEngine::performDiff(masterName, actualName, inMemoryOutput);
}

OrvDiffResult* OrvDiffWellFormedXmlFileEngine::performValidation(const std::string& fileName) {
  return findXmlFault(m_parser, fileName, nullptr, [this](const char* text, std::uint64_t length) {
    m_parser->parseText(text, VELDowncastSize::uint32(length, m_unit, kTextTooLongLine));
  });
}
