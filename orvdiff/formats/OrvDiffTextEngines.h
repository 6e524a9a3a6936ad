#pragma once

#include <string>

#include "orvdiff/engine/OrvFixedLayoutEngine.h"
#include "orvdiff/formats/OrvDiffTextFileTypeEngine.h"
#include "orvdiff/orvdiff_export.h"

/// The engines that compare outputs as normalised text. Each says where its files are and which
/// patterns, in which order, make two runs comparable; the base does the rest. `subFolder` is not
/// copied and must outlive the engine; null or empty means none.

/// Base of a text engine with a fixed layout.
using OrvDiffTextFormatEngine = OrvFixedLayoutEngine<OrvDiffTextFileTypeEngine>;

/// The report's object tree.
class ORVDIFF_API OrvDiffNaoFileEngine : public OrvDiffTextFormatEngine {
 public:
  explicit OrvDiffNaoFileEngine(const char* subFolder);
  ~OrvDiffNaoFileEngine() override;

  /// Appends the patterns of object trees, for this engine and the prompt pages'.
  static void getNormalizationPatterns(OrvPatternList& patterns);
};

/// A prompt page's object tree.
class ORVDIFF_API OrvDiffPnaoFileEngine : public OrvDiffTextFormatEngine {
 public:
  explicit OrvDiffPnaoFileEngine(const char* subFolder);
  ~OrvDiffPnaoFileEngine() override;
};

/// A report specification after drilling.
class ORVDIFF_API OrvDiffDrilledReportSpecEngine : public OrvDiffTextFormatEngine {
 public:
  explicit OrvDiffDrilledReportSpecEngine(const char* subFolder);
  ~OrvDiffDrilledReportSpecEngine() override;
};

/// The query items that a report refers to.
class ORVDIFF_API OrvDiffRefQueryItemEngine : public OrvDiffTextFormatEngine {
 public:
  explicit OrvDiffRefQueryItemEngine(const char* subFolder);
  ~OrvDiffRefQueryItemEngine() override;
};

/// Where a report can be drilled up and down.
class ORVDIFF_API OrvDiffDrillUpDownStateEngine : public OrvDiffTextFormatEngine {
 public:
  explicit OrvDiffDrillUpDownStateEngine(const char* subFolder);
  ~OrvDiffDrillUpDownStateEngine() override;
};

/// Layout data, page by page.
class ORVDIFF_API OrvDiffPagedLayoutDataXmlFileEngine : public OrvDiffTextFormatEngine {
 public:
  explicit OrvDiffPagedLayoutDataXmlFileEngine(const char* subFolder);
  ~OrvDiffPagedLayoutDataXmlFileEngine() override;
};

/// The server's XML before rendering.
class ORVDIFF_API OrvDiffRawXmlFileEngine : public OrvDiffTextFormatEngine {
 public:
  explicit OrvDiffRawXmlFileEngine(const char* subFolder);
  ~OrvDiffRawXmlFileEngine() override;
};

/// A page with its parts in one MIME document.
class ORVDIFF_API OrvDiffMhtFileEngine : public OrvDiffTextFormatEngine {
 public:
  explicit OrvDiffMhtFileEngine(const char* subFolder);
  ~OrvDiffMhtFileEngine() override;
};

/// The same document as the report-authoring view stores it: the masters and patterns of the MIME
/// document, but its own output folder.
class ORVDIFF_API OrvDiffRaFileEngine : public OrvDiffMhtFileEngine {
 public:
  explicit OrvDiffRaFileEngine(const char* subFolder);
  ~OrvDiffRaFileEngine() override;
  std::string getOutputDirectoryTypeName() const override;
};

/// HTML pages.
class ORVDIFF_API OrvDiffHtmlFileEngine : public OrvDiffTextFormatEngine {
 public:
  explicit OrvDiffHtmlFileEngine(const char* subFolder);
  ~OrvDiffHtmlFileEngine() override;
};

/// XHTML pages.
class ORVDIFF_API OrvDiffXhtmlFileEngine : public OrvDiffTextFormatEngine {
 public:
  explicit OrvDiffXhtmlFileEngine(const char* subFolder);
  ~OrvDiffXhtmlFileEngine() override;
};

/// XML data.
class ORVDIFF_API OrvDiffXmlFileEngine : public OrvDiffTextFormatEngine {
 public:
  explicit OrvDiffXmlFileEngine(const char* subFolder);
  ~OrvDiffXmlFileEngine() override;
};

/// Visualisation data.
class ORVDIFF_API OrvDiffVizFileEngine : public OrvDiffTextFormatEngine {
 public:
  explicit OrvDiffVizFileEngine(const char* subFolder);
  ~OrvDiffVizFileEngine() override;
};

/// A spreadsheet as HTML.
class ORVDIFF_API OrvDiffXlsFileEngine : public OrvDiffTextFormatEngine {
 public:
  explicit OrvDiffXlsFileEngine(const char* subFolder);
  ~OrvDiffXlsFileEngine() override;
};

/// A spreadsheet as a web archive; one master, named exactly like the report.
class ORVDIFF_API OrvDiffXlwaFileEngine : public OrvDiffTextFormatEngine {
 public:
  explicit OrvDiffXlwaFileEngine(const char* subFolder);
  ~OrvDiffXlwaFileEngine() override;
};

/// Chart graphics scripts. Their folders depend on the chart service under test, so the host passes
/// them. Always compared on disk, even if the host holds the output in memory.
class ORVDIFF_API OrvDiffCgsFileEngine : public OrvDiffTextFileTypeEngine {
 public:
  /// Copies its arguments except `subFolder`. A null `outputDirectoryTypeName` raises
  /// `VELAssertError`. `masterSubFolder` (null: none) is one more level below the master folder;
  /// with `fileNameSuffix` (null: none) only masters whose names end in "_" + suffix are found.
  OrvDiffCgsFileEngine(const char* subFolder, const char* outputDirectoryTypeName,
                       const char* masterSubFolder, const char* fileNameSuffix);
  ~OrvDiffCgsFileEngine() override;

  /// Looks for the output on disk only and ignores `testInfo`; so does `verifyOutput`.
  OrvDiffResult* comparePair(const OrvFilePair& pair, OrvTestInfo* testInfo) override;
  std::string getOutputDirectoryTypeName() const override;
  std::string getMasterFileGlobExpression(const std::string& location) const override;

 private:
  std::string m_outputDirectoryTypeName;
  std::string m_masterSubFolder;
  std::string m_fileNameSuffix;
};

/// Prompt pages. The host passes their folders.
class ORVDIFF_API OrvDiffPrpFileEngine : public OrvDiffTextFileTypeEngine {
 public:
  /// The arguments are those of `OrvDiffCgsFileEngine`.
  OrvDiffPrpFileEngine(const char* subFolder, const char* outputDirectoryTypeName,
                       const char* masterSubFolder);
  ~OrvDiffPrpFileEngine() override;

  std::string getOutputDirectoryTypeName() const override;
  std::string getMasterFileGlobExpression(const std::string& location) const override;

 private:
  std::string m_outputDirectoryTypeName;
  std::string m_masterSubFolder;
};
