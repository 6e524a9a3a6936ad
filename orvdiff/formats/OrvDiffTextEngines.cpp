#include "orvdiff/formats/OrvDiffTextEngines.h"

#include "orvdiff/platform/VELAssert.h"
#include "orvdiff/platform/VELFmDir.h"

using Patterns = OrvDiffNormalizationPatterns;

OrvDiffNaoFileEngine::OrvDiffNaoFileEngine(const char* subFolder)
    : OrvDiffTextFormatEngine(subFolder, {"v5DebugNAO", "/", "*.nao"}) {
  OrvPatternList patterns;
  getNormalizationPatterns(patterns);
  for (const OrvDiffNormalizationPattern* const pattern : patterns) {
    addCleansingPattern(pattern);
  }
}

OrvDiffNaoFileEngine::~OrvDiffNaoFileEngine() = default;

void OrvDiffNaoFileEngine::getNormalizationPatterns(OrvPatternList& patterns) {
  for (const auto id :
       {Patterns::eScriptElement, Patterns::eChartNameAttribute, Patterns::eNextNameAndIdAttributes,
        Patterns::eCopyrightMetaTag, Patterns::eGeneratorIdMetaTag, Patterns::eTitleAttribute,
        Patterns::eTrademarkMetaTag, Patterns::eUaCompatibleMetaTag,
        Patterns::eEventHandlerAttribute, Patterns::eCtxAttribute, Patterns::eIdAttribute,
        Patterns::eNameAttribute, Patterns::eCoordsAttribute, Patterns::eLabelForTag}) {
    patterns.push_back(Patterns::getPattern(id));
  }
}

OrvDiffPnaoFileEngine::OrvDiffPnaoFileEngine(const char* subFolder)
    : OrvDiffTextFormatEngine(subFolder, {"v5DebugPromptNAO", "/PromptNAO/", "*.nao"}) {
  OrvPatternList patterns;
  OrvDiffNaoFileEngine::getNormalizationPatterns(patterns);
  for (const OrvDiffNormalizationPattern* const pattern : patterns) {
    addCleansingPattern(pattern);
  }
}

OrvDiffPnaoFileEngine::~OrvDiffPnaoFileEngine() = default;

OrvDiffDrilledReportSpecEngine::OrvDiffDrilledReportSpecEngine(const char* subFolder)
    : OrvDiffTextFormatEngine(subFolder,
                              {"v5DebugDrilledReportSpec", "/DrilledReportSpec/", "*.xml"}) {
  addCleansingPatterns({Patterns::eCoordsAttribute, Patterns::eReportSpecNamespaceVersion});
}

OrvDiffDrilledReportSpecEngine::~OrvDiffDrilledReportSpecEngine() = default;

OrvDiffRefQueryItemEngine::OrvDiffRefQueryItemEngine(const char* subFolder)
    : OrvDiffTextFormatEngine(subFolder, {"v5DebugRefQueryItems", "/RefQueryItems/", "*.xml"}) {
  addCleansingPatterns({Patterns::eCoordsAttribute});
}

OrvDiffRefQueryItemEngine::~OrvDiffRefQueryItemEngine() = default;

OrvDiffDrillUpDownStateEngine::OrvDiffDrillUpDownStateEngine(const char* subFolder)
    : OrvDiffTextFormatEngine(subFolder,
                              {"v5DebugDrilledUpDownState", "/DrilledUpDownState/", "*.xml"}) {
  addCleansingPatterns({Patterns::eCoordsAttribute});
}

OrvDiffDrillUpDownStateEngine::~OrvDiffDrillUpDownStateEngine() = default;

OrvDiffPagedLayoutDataXmlFileEngine::OrvDiffPagedLayoutDataXmlFileEngine(const char* subFolder)
    : OrvDiffTextFormatEngine(subFolder, {"v5DebugPagedDataXML", "/PagedDataXML/", "*.xml"}) {
  addCleansingPatterns({Patterns::eCoordElement, Patterns::eFilenameElement});
}

OrvDiffPagedLayoutDataXmlFileEngine::~OrvDiffPagedLayoutDataXmlFileEngine() = default;

OrvDiffRawXmlFileEngine::OrvDiffRawXmlFileEngine(const char* subFolder)
    : OrvDiffTextFormatEngine(subFolder, {"v5DebugRawXml", "/RawXML/", "*.xml"}) {
  addCleansingPatterns({Patterns::eCoordsAttribute});
}

OrvDiffRawXmlFileEngine::~OrvDiffRawXmlFileEngine() = default;

OrvDiffMhtFileEngine::OrvDiffMhtFileEngine(const char* subFolder)
    : OrvDiffTextFormatEngine(subFolder, {"v5DebugMHT", "/", "*.mht"}) {
  addCleansingPatterns({Patterns::eSoftLineBreak, Patterns::eLineBreak,
                        Patterns::eQuotedPrintableEquals, Patterns::eScriptElement,
                        Patterns::eChartNameAttribute, Patterns::eImageSourcePrefix,
                        Patterns::eCopyrightMetaTag, Patterns::eGeneratorIdMetaTag,
                        Patterns::eTrademarkMetaTag, Patterns::eUaCompatibleMetaTag});
}

OrvDiffMhtFileEngine::~OrvDiffMhtFileEngine() = default;

OrvDiffRaFileEngine::OrvDiffRaFileEngine(const char* subFolder) : OrvDiffMhtFileEngine(subFolder) {}

OrvDiffRaFileEngine::~OrvDiffRaFileEngine() = default;

std::string OrvDiffRaFileEngine::getOutputDirectoryTypeName() const {
  return "v5DebugRA";
}

OrvDiffHtmlFileEngine::OrvDiffHtmlFileEngine(const char* subFolder)
    : OrvDiffTextFormatEngine(subFolder, {"v5DebugHTML", "/", "*.html"}) {
  addCleansingPatterns(
      {Patterns::eLineBreak, Patterns::eScriptElement, Patterns::eChartNameAttribute,
       Patterns::eNextNameAndIdAttributes, Patterns::eCopyrightMetaTag,
       Patterns::eGeneratorIdMetaTag, Patterns::eTrademarkMetaTag, Patterns::eUaCompatibleMetaTag,
       Patterns::eEventHandlerAttribute, Patterns::ePromptIdAttribute, Patterns::eCoordsAttribute,
       Patterns::eAriaLabelledByAttribute, Patterns::eIdAttribute,
       Patterns::eAriaLabelledByHeadersAttribute, Patterns::eCtxAttribute, Patterns::eForAttribute,
       Patterns::eNameAttribute});
}

OrvDiffHtmlFileEngine::~OrvDiffHtmlFileEngine() = default;

OrvDiffXhtmlFileEngine::OrvDiffXhtmlFileEngine(const char* subFolder)
    : OrvDiffTextFormatEngine(subFolder, {"v5DebugXHTML", "/", "*.xml"}) {
  addCleansingPatterns(
      {Patterns::eScriptElement, Patterns::eChartNameAttribute, Patterns::eCoordsAttribute});
}

OrvDiffXhtmlFileEngine::~OrvDiffXhtmlFileEngine() = default;

OrvDiffXmlFileEngine::OrvDiffXmlFileEngine(const char* subFolder)
    : OrvDiffTextFormatEngine(subFolder, {"v5DebugXML", "/XML/", "*.xml"}) {}

OrvDiffXmlFileEngine::~OrvDiffXmlFileEngine() = default;

OrvDiffVizFileEngine::OrvDiffVizFileEngine(const char* subFolder)
    : OrvDiffTextFormatEngine(subFolder, {"v5DebugViz", "/Viz/", "*.xml"}) {}

OrvDiffVizFileEngine::~OrvDiffVizFileEngine() = default;

OrvDiffXlsFileEngine::OrvDiffXlsFileEngine(const char* subFolder)
    : OrvDiffTextFormatEngine(subFolder, {"v5DebugXLS", "/XLS/", "*.html"}) {
  addCleansingPatterns({Patterns::eScriptElement, Patterns::eImageSourcePrefix});
}

OrvDiffXlsFileEngine::~OrvDiffXlsFileEngine() = default;

OrvDiffXlwaFileEngine::OrvDiffXlwaFileEngine(const char* subFolder)
    : OrvDiffTextFormatEngine(subFolder, {"v5DebugXLWA", "/XLWA/", ".mht"}) {
  addCleansingPatterns({Patterns::eScriptElement, Patterns::eImageSourcePrefix});
}

OrvDiffXlwaFileEngine::~OrvDiffXlwaFileEngine() = default;

namespace {

const char* required(const char* outputDirectoryTypeName) {
  VEL_ASSERT(outputDirectoryTypeName);
  return outputDirectoryTypeName;
}

const char* orEmpty(const char* text) {
  return text != nullptr ? text : "";
}

/// `directory`, or its `subFolder` unless that is empty.
std::string joinSubFolder(std::string directory, const std::string& subFolder) {
  if (!subFolder.empty()) {
    VELFmDir::joinPath(directory, subFolder.c_str());
  }
  return directory;
}

}  // namespace

OrvDiffCgsFileEngine::OrvDiffCgsFileEngine(const char* subFolder,
                                           const char* outputDirectoryTypeName,
                                           const char* masterSubFolder, const char* fileNameSuffix)
    : OrvDiffTextFileTypeEngine(subFolder),
      m_outputDirectoryTypeName(required(outputDirectoryTypeName)),
      m_masterSubFolder(orEmpty(masterSubFolder)),
      m_fileNameSuffix(orEmpty(fileNameSuffix)) {
  addCleansingPatterns(
      {Patterns::eChartTempName, Patterns::eRemoveReferenceCall, Patterns::eBinDirectory});
}

OrvDiffCgsFileEngine::~OrvDiffCgsFileEngine() = default;

OrvDiffResult* OrvDiffCgsFileEngine::comparePair(const OrvFilePair& pair,
                                                 OrvTestInfo* /*testInfo*/) {
  return OrvDiffTextFileTypeEngine::comparePair(pair, nullptr);
}

std::string OrvDiffCgsFileEngine::getOutputDirectoryTypeName() const {
  return m_outputDirectoryTypeName;
}

std::string OrvDiffCgsFileEngine::getMasterFileGlobExpression(const std::string& location) const {
  std::string pattern = joinSubFolder(getMasterFileDirectory(location), m_masterSubFolder);
  VELFmDir::joinPath(pattern, getReportName(location).c_str());
  pattern += '*';
  if (!m_fileNameSuffix.empty()) {
    pattern += '_' + m_fileNameSuffix;
  }
  return pattern + ".cgs";
}

OrvDiffPrpFileEngine::OrvDiffPrpFileEngine(const char* subFolder,
                                           const char* outputDirectoryTypeName,
                                           const char* masterSubFolder)
    : OrvDiffTextFileTypeEngine(subFolder),
      m_outputDirectoryTypeName(required(outputDirectoryTypeName)),
      m_masterSubFolder(orEmpty(masterSubFolder)) {}

OrvDiffPrpFileEngine::~OrvDiffPrpFileEngine() = default;

std::string OrvDiffPrpFileEngine::getOutputDirectoryTypeName() const {
  return m_outputDirectoryTypeName;
}

std::string OrvDiffPrpFileEngine::getMasterFileGlobExpression(const std::string& location) const {
  std::string pattern = joinSubFolder(getMasterFileDirectory(location), m_masterSubFolder);
  VELFmDir::joinPath(pattern, (getReportName(location) + "*.prp").c_str());
  return pattern;
}
