#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"

#include "orvdiff/platform/OrvDeployment.h"
#include "orvdiff/platform/VELAssert.h"

// The expressions delete (or unify) what changes from run to run: script blocks, generated
// identifiers, chart file names, generator tags, coordinates. A row's index is its enum value.
// clang-format off
OrvDiffNormalizationPatterns::OrvNormalizationPatternEntry
    OrvDiffNormalizationPatterns::m_normalizationPatternArray[] = {
    {eScriptElement, "(?s)<script.*?</script>", nullptr, nullptr},
    {eChartNameAttribute, R"~(\bname="chart.*?")~", nullptr, nullptr},
    {eNextNameAndIdAttributes, R"~(\bname="next.*?"\sid="next.*?")~", nullptr, nullptr},
    {eCopyrightMetaTag, R"~(<meta name="Copyright".*?>[\r\n]*)~", nullptr, nullptr},
    {eGeneratorIdMetaTag, R"~(<meta name="GeneratorID".*?>[\r\n]*)~", nullptr, nullptr},
    {eTrademarkMetaTag, R"~(<meta name="Trademark".*?>)~", nullptr, nullptr},
    {eUaCompatibleMetaTag, R"~(<meta http\-equiv="X\-UA\-Compatible".*?>[\r\n]*)~", nullptr, nullptr},
    {eEventHandlerAttribute, R"~(on(click|load|mousemove|mouseup|keypress|keydown|dblclick|contextmenu)=".*?" *)~", nullptr, nullptr},
    {eImageSourcePrefix, "<img src=.*?v1/", nullptr, nullptr},
    {eCtxAttribute, R"~( ctx="[0-9:]+")~", nullptr, nullptr},
    {eNameAttribute, R"~( name="[a-zA-Z_0-9]+" *)~", nullptr, nullptr},
    {ePromptIdAttribute, R"~( id="PRMT_[A-Za-z_0-9]+" *)~", nullptr, nullptr},
    {eForAttribute, R"~( for="[A-Za-z_0-9\[\]]+" *)~", nullptr, nullptr},
    {eAriaLabelledByAttribute, R"~( +aria-labelledby="( _THIS_[A-Za-z_0-9.]+hiddenspan[0-9]+)? *[A-Za-z_0-9.]+" *)~", nullptr, nullptr},
    {eAriaLabelledByHeadersAttribute, R"~(aria-labelledby="(_THIS_hdr[0-9]+)( _THIS_hdr[0-9]+)*( _THIS_[A-Za-z_0-9.]+hiddenspan[0-9]+)? [A-Za-z_0-9.]+" *)~", nullptr, nullptr},
    {eIdAttribute, R"~( +id="[A-Za-z_0-9.]+" *)~", nullptr, nullptr},
    {eChartTempName, "chart_tmp_[0-9]+", nullptr, nullptr},
    {eRemoveReferenceCall, R"~(c[0-9]+\.removeReference)~", nullptr, nullptr},
    {eCoordsAttribute, R"~(\bcoords=".*?")~", nullptr, nullptr},
    {eCoordElement, "<coord>.*?</coord>", nullptr, nullptr},
    {eLabelForTag, R"~(<label for=".*?">)~", nullptr, nullptr},
    {eQuotedPrintableEquals, "=3D", "=", nullptr},
    {eBinDirectory, R"~([\\/]bind?[\\/])~", nullptr, nullptr},
    {eExcelDataElement, "<x:Data>.*?</x:Data>", nullptr, nullptr},
    {eExponentNumber, R"~([-+]?[0-9]*\.?[0-9]+[eE][-+][0-9]+)~", nullptr, nullptr},
    {eDecimalNumber, R"~([-+]?[0-9]*\.[0-9]+([eE][-+][0-9]+)?)~", nullptr, nullptr},
    {eQuotedChartTempName, R"~(".*?chart_tmp_[0-9]+")~", nullptr, nullptr},
    {eFilenameElement, "<filename>.*?</filename>", nullptr, nullptr},
    {eAreaElement, "<area.*?>.*?</area>", nullptr, nullptr},
    {eAreaTag, "<area.*?>", nullptr, nullptr},
    {ePngContent, "Content-Type: image/png.*", nullptr, nullptr},
    {eLineBreak, "((\n)|(\r\n))", nullptr, nullptr},
    {eSoftLineBreak, "=((\n)|(\r\n))", nullptr, nullptr},
    {eWidthStyle, "width:[0-9]+[a-zA-Z]+;", nullptr, nullptr},
    {eAxisValueAsStringLine, ".*getAxisValueAsString.*[\n\r]*", nullptr, nullptr},
    {eTitleAttribute, R"~(\btitle=".*?")~", nullptr, nullptr},
    {eReportSpecNamespaceVersion, "http://" ORV_REPORT_NAMESPACE_HOST_PATTERN R"~(/schemas/report/13\.[0-9]+/)~", "http://" ORV_REPORT_NAMESPACE_HOST "/schemas/report/13/", nullptr},
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
  m_shares.push_back(OrvDiffNormalizationPatterns::share(pattern));
  m_list.push_back(pattern);
}
