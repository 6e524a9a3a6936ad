#pragma once

#include <memory>
#include <string>

#include "orvdiff/formats/OrvDiffTextEngines.h"
#include "orvdiff/orvdiff_export.h"

namespace orvdiff::detail {
class DOM_ParserImpl;
}

/// Authored drill-through targets: the output on disk must be well-formed XML before it is compared
/// as normalised text. The host initialises Xerces before it creates the engine, and terminates it
/// after the engine is gone; an engine created without raises `VELAssertError`.
class ORVDIFF_API OrvDiffAuthoredDThroughTargetsXmlFileEngine : public OrvDiffTextFormatEngine {
 public:
  explicit OrvDiffAuthoredDThroughTargetsXmlFileEngine(const char* subFolder);
  ~OrvDiffAuthoredDThroughTargetsXmlFileEngine() override;

  /// The base's comparison, unless the actual file is missing or fails the parser: then a block on
  /// standard output says why, and both names of the plain failure are the actual file's. The file
  /// is what is parsed, also when the output is held in memory.
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;

 private:
  OrvDiffResult* performAuthoredDThroughTargetsValidation(const std::string& fileName);

  std::shared_ptr<orvdiff::detail::DOM_ParserImpl> m_parser;
};
