#include "orvdiff/formats/OrvDiffWellFormedXmlFileEngine.h"

#include "orvdiff/formats/XmlFault.h"
#include "orvdiff/platform/VELDowncastSize.h"

namespace {

/// The line that the error for a text that is too long carries; hosts know it.
constexpr int kTextTooLongLine = 139;

}  // namespace

OrvDiffWellFormedXmlFileEngine::OrvDiffWellFormedXmlFileEngine(const char* subFolder,
                                                               const OrvFormatLayout& layout,
                                                               const char* unit,
                                                               XmlDocumentKind kind)
    : OrvDiffTextFormatEngine(subFolder, layout), m_unit(unit), m_kind(kind) {}

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
  return findXmlFault(
      m_parser, m_kind, fileName, nullptr, [this](const char* text, std::uint64_t length) {
        m_parser->parseText(text, VELDowncastSize::uint32(length, m_unit, kTextTooLongLine));
      });
}
