#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"

#include <iterator>

#include "orvdiff/platform/OrvDeployment.h"
#include "orvdiff/platform/VELAssert.h"

// The expressions delete (or unify) what changes from run to run: script blocks, generated
// identifiers, chart file names, generator tags, coordinates. A row's index is its enum value.
// clang-format off
OrvDiffNormalizationPatterns::OrvNormalizationPatternEntry
    OrvDiffNormalizationPatterns::m_normalizationPatternArray[] = {
    {eScriptElement, "(?s)<script.*?</script>", nullptr, nullptr, "ScriptElement"},
    {eChartNameAttribute, R"~(\bname="chart.*?")~", nullptr, nullptr, "ChartNameAttribute"},
    {eNextNameAndIdAttributes, R"~(\bname="next.*?"\sid="next.*?")~", nullptr, nullptr, "NextNameAndIdAttributes"},
    {eCopyrightMetaTag, R"~(<meta name="Copyright".*?>[\r\n]*)~", nullptr, nullptr, "CopyrightMetaTag"},
    {eGeneratorIdMetaTag, R"~(<meta name="GeneratorID".*?>[\r\n]*)~", nullptr, nullptr, "GeneratorIdMetaTag"},
    {eTrademarkMetaTag, R"~(<meta name="Trademark".*?>)~", nullptr, nullptr, "TrademarkMetaTag"},
    {eUaCompatibleMetaTag, R"~(<meta http\-equiv="X\-UA\-Compatible".*?>[\r\n]*)~", nullptr, nullptr, "UaCompatibleMetaTag"},
    {eEventHandlerAttribute, R"~(on(click|load|mousemove|mouseup|keypress|keydown|dblclick|contextmenu)=".*?" *)~", nullptr, nullptr, "EventHandlerAttribute"},
    {eImageSourcePrefix, "<img src=.*?v1/", nullptr, nullptr, "ImageSourcePrefix"},
    {eCtxAttribute, R"~( ctx="[0-9:]+")~", nullptr, nullptr, "CtxAttribute"},
    {eNameAttribute, R"~( name="[a-zA-Z_0-9]+" *)~", nullptr, nullptr, "NameAttribute"},
    {ePromptIdAttribute, R"~( id="PRMT_[A-Za-z_0-9]+" *)~", nullptr, nullptr, "PromptIdAttribute"},
    {eForAttribute, R"~( for="[A-Za-z_0-9\[\]]+" *)~", nullptr, nullptr, "ForAttribute"},
    {eAriaLabelledByAttribute, R"~( +aria-labelledby="( _THIS_[A-Za-z_0-9.]+hiddenspan[0-9]+)? *[A-Za-z_0-9.]+" *)~", nullptr, nullptr, "AriaLabelledByAttribute"},
    {eAriaLabelledByHeadersAttribute, R"~(aria-labelledby="(_THIS_hdr[0-9]+)( _THIS_hdr[0-9]+)*( _THIS_[A-Za-z_0-9.]+hiddenspan[0-9]+)? [A-Za-z_0-9.]+" *)~", nullptr, nullptr, "AriaLabelledByHeadersAttribute"},
    {eIdAttribute, R"~( +id="[A-Za-z_0-9.]+" *)~", nullptr, nullptr, "IdAttribute"},
    {eChartTempName, "chart_tmp_[0-9]+", nullptr, nullptr, "ChartTempName"},
    {eRemoveReferenceCall, R"~(c[0-9]+\.removeReference)~", nullptr, nullptr, "RemoveReferenceCall"},
    {eCoordsAttribute, R"~(\bcoords=".*?")~", nullptr, nullptr, "CoordsAttribute"},
    {eCoordElement, "<coord>.*?</coord>", nullptr, nullptr, "CoordElement"},
    {eLabelForTag, R"~(<label for=".*?">)~", nullptr, nullptr, "LabelForTag"},
    {eQuotedPrintableEquals, "=3D", "=", nullptr, "QuotedPrintableEquals"},
    {eBinDirectory, R"~([\\/]bind?[\\/])~", nullptr, nullptr, "BinDirectory"},
    {eExcelDataElement, "<x:Data>.*?</x:Data>", nullptr, nullptr, "ExcelDataElement"},
    {eExponentNumber, R"~([-+]?[0-9]*\.?[0-9]+[eE][-+][0-9]+)~", nullptr, nullptr, "ExponentNumber"},
    {eDecimalNumber, R"~([-+]?[0-9]*\.[0-9]+([eE][-+][0-9]+)?)~", nullptr, nullptr, "DecimalNumber"},
    {eQuotedChartTempName, R"~(".*?chart_tmp_[0-9]+")~", nullptr, nullptr, "QuotedChartTempName"},
    {eFilenameElement, "<filename>.*?</filename>", nullptr, nullptr, "FilenameElement"},
    {eAreaElement, "<area.*?>.*?</area>", nullptr, nullptr, "AreaElement"},
    {eAreaTag, "<area.*?>", nullptr, nullptr, "AreaTag"},
    {ePngContent, "Content-Type: image/png.*", nullptr, nullptr, "PngContent"},
    {eLineBreak, "((\n)|(\r\n))", nullptr, nullptr, "LineBreak"},
    {eSoftLineBreak, "=((\n)|(\r\n))", nullptr, nullptr, "SoftLineBreak"},
    {eWidthStyle, "width:[0-9]+[a-zA-Z]+;", nullptr, nullptr, "WidthStyle"},
    {eAxisValueAsStringLine, ".*getAxisValueAsString.*[\n\r]*", nullptr, nullptr, "AxisValueAsStringLine"},
    {eTitleAttribute, R"~(\btitle=".*?")~", nullptr, nullptr, "TitleAttribute"},
    {eReportSpecNamespaceVersion, "http://" ORV_REPORT_NAMESPACE_HOST_PATTERN R"~(/schemas/report/13\.[0-9]+/)~", "http://" ORV_REPORT_NAMESPACE_HOST "/schemas/report/13/", nullptr, "ReportSpecNamespaceVersion"},
};
// clang-format on

const OrvDiffNormalizationPattern* OrvDiffNormalizationPatterns::getPattern(
    OrvNormalizationPatternsEnum id) {
  OrvNormalizationPatternEntry& row = m_normalizationPatternArray[id];
  if (row.cachedPattern == nullptr) {
    row.cachedPattern = velGuardAllocation(VEL_HERE, [&row] {
      return std::make_shared<const OrvDiffNormalizationPattern>(row.regularExpression,
                                                                 row.replacementText);
    });
  }
  return row.cachedPattern.get();
}

const char* OrvDiffNormalizationPatterns::getName(const OrvDiffNormalizationPattern& pattern) {
  for (const OrvNormalizationPatternEntry& row : m_normalizationPatternArray) {
    if (pattern.getExpression() == row.regularExpression) {
      return row.name;
    }
  }
  return nullptr;
}

void OrvDiffNormalizationPatterns::reset() {
  for (OrvNormalizationPatternEntry& row : m_normalizationPatternArray) {
    row.cachedPattern.reset();
  }
}

std::shared_ptr<const OrvDiffNormalizationPattern> OrvDiffNormalizationPatterns::share(
    const OrvDiffNormalizationPattern* pattern) {
  for (const OrvNormalizationPatternEntry& row : m_normalizationPatternArray) {
    if (row.cachedPattern.get() == pattern) {
      return row.cachedPattern;
    }
  }
  return nullptr;
}

void OrvSharedPatternList::add(const OrvDiffNormalizationPattern* pattern) {
  insert(m_list.size(), pattern);
}

void OrvSharedPatternList::insert(std::size_t position,
                                  const OrvDiffNormalizationPattern* pattern) {
  m_shares.push_back(OrvDiffNormalizationPatterns::share(pattern));
  m_list.insert(std::next(m_list.begin(), static_cast<std::ptrdiff_t>(position)), pattern);
}
