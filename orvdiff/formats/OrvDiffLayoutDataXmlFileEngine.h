#pragma once

#include <memory>
#include <string>

#include "orvdiff/formats/OrvDiffTextEngines.h"
#include "orvdiff/orvdiff_export.h"

namespace orvdiff::detail {
class DOM_ParserImpl;
}

/// Layout data: the output, in memory or on disk, must be valid against the layout-data schema
/// before it is compared as normalised text.
///
/// The schema is read when the first document needs it, and then kept. While it cannot be read, or
/// is broken, every document fails, and a line on standard output names the schema's path.
/// The host initialises Xerces before it creates the engine, and terminates it after the engine is
/// gone; an engine created without raises `VELAssertError`.
class ORVDIFF_API OrvDiffLayoutDataXmlFileEngine
    : public OrvLaidOutEngine<OrvDiffTextFileTypeEngine> {
 public:
  /// Validates against the schema, and for the namespace, of the deployment.
  explicit OrvDiffLayoutDataXmlFileEngine(const char* subFolder);

  /// Validates documents of the namespace `namespaceUri` against the schema file `schemaPath`,
  /// which is relative to the working folder; null stands for the deployment's. Both are copied.
  OrvDiffLayoutDataXmlFileEngine(const char* subFolder, const char* namespaceUri,
                                 const char* schemaPath);
  ~OrvDiffLayoutDataXmlFileEngine() override;

  /// Appends a pattern to those of the format, `coord` and `filename` elements; not while
  /// verifying. A null one raises `VELAssertError`.
  void addCleansingPattern(const OrvDiffNormalizationPattern* pattern);

  /// The patterns that texts are normalised by, in the order in which they were added.
  const OrvPatternList& getCleansingPatterns() const { return m_dataCleansingPatterns.list(); }

  /// A missing actual file (unless the output is in memory); a plain failure, both names being the
  /// actual file's, when the output is not valid: a block on standard output then says why, and a
  /// stream stays frozen. Else what comparing with the master gives.
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;

 private:
  OrvDiffResult* performSchemaValidation(const std::string& fileName, const char* inMemoryText);
  void loadSchema();
  void reportUnusableSchema(const std::string& reason);

  OrvHeldPatterns m_dataCleansingPatterns;
  const std::string m_namespaceUri;
  const std::string m_schemaPath;
  std::shared_ptr<orvdiff::detail::DOM_ParserImpl> m_parser;
};
