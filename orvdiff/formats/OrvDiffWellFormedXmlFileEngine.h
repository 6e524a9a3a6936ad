#pragma once

#include <memory>
#include <string>

#include "orvdiff/formats/OrvDiffTextEngines.h"
#include "orvdiff/orvdiff_export.h"

namespace orvdiff::detail {
class XmlParser;
enum class XmlDocumentKind;
}  // namespace orvdiff::detail

/// Base of the engines whose output on disk must be well-formed XML before it is compared as
/// normalised text. The host initialises Xerces before it creates such an engine and terminates it
/// after destroying the engine, or calls `OrvXerces::initializeOnDemand`; without that,
/// `performDiff` raises `VELAssertError`.
class ORVDIFF_API OrvDiffWellFormedXmlFileEngine : public OrvDiffTextFormatEngine {
 public:
  ~OrvDiffWellFormedXmlFileEngine() override;

  /// The text engine's comparison, unless the actual file is missing or not well-formed. In the
  /// latter case a block on standard output says why, and the result is a plain failure with the
  /// actual file as both names. The file is what is parsed, even if the output is held in memory.
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;

 protected:
  /// `unit` is the class that errors name as their source; the text must outlive the engine.
  OrvDiffWellFormedXmlFileEngine(const char* subFolder, const OrvFormatLayout& layout,
                                 const char* unit, orvdiff::detail::XmlDocumentKind kind);

 private:
  OrvDiffResult* performValidation(const std::string& fileName);

  const char* m_unit;
  const orvdiff::detail::XmlDocumentKind m_kind;
  std::shared_ptr<orvdiff::detail::XmlParser> m_parser;  ///< from the first document on
};
