#pragma once

#include <memory>
#include <string>

#include "orvdiff/formats/OrvDiffTextEngines.h"
#include "orvdiff/orvdiff_export.h"

class DOM_ParserImpl;

/// Layout data: the output, in memory or on disk, must be valid against the layout-data schema
/// before it is compared as normalised text.
///
/// The first document loads the schema, which is then kept. As long as it cannot be read or is
/// broken, every document fails, and a line on standard output names the schema's path and the
/// reason; where the machine lacks memory or file descriptors for it, `performDiff` raises
/// `VELOutOfMemoryError` or `VELStdExceptionError` instead.
///
/// The host initialises Xerces before it creates the engine and terminates it after the engine is
/// destroyed. Without that, the constructor raises `VELAssertError`.
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

  /// Appends a pattern to the format's own, which remove `coord` and `filename` elements. Not while
  /// verifying. A null pattern raises `VELAssertError`.
  void addCleansingPattern(const OrvDiffNormalizationPattern* pattern);

  /// The patterns that normalise texts, in the order in which they were added.
  const OrvPatternList& getCleansingPatterns() const { return m_dataCleansingPatterns.list(); }

  /// Returns: the actual file as missing (unless the output is in memory); a plain failure with the
  /// actual file for both names when the output is not valid (a block on standard output says why,
  /// and the stream stays frozen); else the result of the comparison with the master.
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;

 private:
  OrvDiffResult* performSchemaValidation(const std::string& fileName, const char* inMemoryText);
  void loadSchema();
  void reportUnusableSchema(const std::string& reason);

  OrvHeldPatterns m_dataCleansingPatterns;
  const std::string m_namespaceUri;
  const std::string m_schemaPath;
  std::shared_ptr<DOM_ParserImpl> m_parser;
};
