#pragma once

#include <initializer_list>
#include <memory>
#include <string>

#include "orvdiff/formats/OrvDiffTextEngines.h"
#include "orvdiff/orvdiff_export.h"

namespace orvdiff::detail {
class XmlParser;
}

/// Layout data: the output, in memory or on disk, must be valid against the layout-data schema
/// before it is compared as normalised text.
///
/// The first document loads the schema, which is then kept. As long as it cannot be read or is
/// broken, every document fails, and a line on standard output names the schema's path and the
/// reason; where the machine lacks memory or file descriptors for it, `performDiff` raises
/// `VELOutOfMemoryError` or `VELStdExceptionError` instead.
///
/// The host initialises Xerces before it creates the engine and terminates it after the engine is
/// destroyed, or calls `OrvXerces::initializeOnDemand`. Without that, `performDiff` raises
/// `VELAssertError`.
class ORVDIFF_API OrvDiffLayoutDataXmlFileEngine
    : public OrvFixedLayoutEngine<OrvDiffTextFileTypeEngine> {
 public:
  /// Validates against the deployment's schema and namespace.
  explicit OrvDiffLayoutDataXmlFileEngine(const char* subFolder);

  /// Validates documents of the namespace `namespaceUri` against the schema file `schemaPath`,
  /// which is relative to the working folder; null means the deployment's. Both are copied.
  OrvDiffLayoutDataXmlFileEngine(const char* subFolder, const char* namespaceUri,
                                 const char* schemaPath);
  ~OrvDiffLayoutDataXmlFileEngine() override;

  /// Appends a pattern to those of the format, which remove `coord` and `filename` elements. Do not
  /// call it during a verification. A null pattern raises `VELAssertError`.
  void addCleansingPattern(const OrvDiffNormalizationPattern* pattern);

  /// Returns the actual file as missing if there is neither a file nor an in-memory output; a plain
  /// failure with the actual file as both names if the output is invalid, after printing a block
  /// that says why on standard output; else the result of comparing it with the master.
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;

 protected:
  /// For other documents that must be valid; `patterns` take the place of the format's.
  OrvDiffLayoutDataXmlFileEngine(
      const char* subFolder, const char* namespaceUri, const char* schemaPath,
      std::initializer_list<OrvDiffNormalizationPatterns::OrvNormalizationPatternsEnum> patterns);

 private:
  OrvDiffResult* performSchemaValidation(const std::string& fileName, const char* inMemoryText);

  const std::string m_namespaceUri;
  const std::string m_schemaPath;
  std::shared_ptr<orvdiff::detail::XmlParser> m_parser;  ///< from the first document on
};
