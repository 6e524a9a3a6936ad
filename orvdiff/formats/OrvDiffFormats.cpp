#include "orvdiff/formats/OrvDiffFormats.h"

#include <algorithm>

#include "orvdiff/formats/OrvDiffAuthoredDThroughTargetsXmlFileEngine.h"
#include "orvdiff/formats/OrvDiffCtxMetadataXmlFileEngine.h"
#include "orvdiff/formats/OrvDiffDataEngines.h"
#include "orvdiff/formats/OrvDiffImageEngines.h"
#include "orvdiff/formats/OrvDiffLayoutDataXmlFileEngine.h"
#include "orvdiff/formats/OrvDiffScriptEngines.h"
#include "orvdiff/formats/OrvDiffTextEngines.h"

namespace {

template <typename Engine>
constexpr auto create = &OrvDiffFormat::create<Engine>;

std::unique_ptr<OrvDiffFileEngine> createCgs(const OrvFormatArguments& arguments) {
  return std::make_unique<OrvDiffCgsFileEngine>(
      arguments.subFolder, arguments.outputDirectoryTypeName, arguments.masterSubFolder,
      arguments.fileNameSuffix);
}

std::unique_ptr<OrvDiffFileEngine> createPrp(const OrvFormatArguments& arguments) {
  return std::make_unique<OrvDiffPrpFileEngine>(
      arguments.subFolder, arguments.outputDirectoryTypeName, arguments.masterSubFolder);
}

std::unique_ptr<OrvDiffFileEngine> createLayoutData(const OrvFormatArguments& arguments) {
  return std::make_unique<OrvDiffLayoutDataXmlFileEngine>(
      arguments.subFolder, arguments.layoutNamespace, arguments.layoutSchema);
}

constexpr std::string_view kNormalized = "normalised text";
constexpr std::string_view kText = "text, carriage returns aside";
constexpr std::string_view kBytes = "byte identity";
constexpr std::string_view kWellFormed = "well-formed XML, then normalised text";
constexpr std::string_view kSchemaValid = "schema-valid XML, then normalised text";
constexpr std::string_view kScript = "external script";
constexpr std::string_view kStatistics = "statistics, with allowances";

using Format = OrvOutputFormat;

// clang-format off
constexpr OrvDiffFormat kFormats[] = {
    {"html",                  Format::Html,                       kNormalized,  false, create<OrvDiffHtmlFileEngine>},
    {"html-png",              Format::HtmlPng,                    kBytes,       false, create<OrvDiffHtmlPngFileEngine>},
    {"xhtml",                 Format::Xhtml,                      kNormalized,  false, create<OrvDiffXhtmlFileEngine>},
    {"xhtml-png",             Format::XhtmlPng,                   kBytes,       false, create<OrvDiffXhtmlPngFileEngine>},
    {"mht",                   Format::Mht,                        kNormalized,  false, create<OrvDiffMhtFileEngine>},
    {"ra",                    Format::Ra,                         kNormalized,  false, create<OrvDiffRaFileEngine>},
    {"nao",                   Format::Nao,                        kNormalized,  false, create<OrvDiffNaoFileEngine>},
    {"prompt-nao",            Format::PromptNao,                  kNormalized,  false, create<OrvDiffPnaoFileEngine>},
    {"xls",                   Format::Xls,                        kNormalized,  false, create<OrvDiffXlsFileEngine>},
    {"xlwa",                  Format::Xlwa,                       kNormalized,  false, create<OrvDiffXlwaFileEngine>},
    {"xml",                   Format::Xml,                        kText,        false, create<OrvDiffXmlFileEngine>},
    {"viz",                   Format::Viz,                        kText,        false, create<OrvDiffVizFileEngine>},
    {"raw-xml",               Format::RawXml,                     kNormalized,  false, create<OrvDiffRawXmlFileEngine>},
    {"raw-xml-png",           Format::RawXmlPng,                  kBytes,       false, create<OrvDiffRawXmlPngFileEngine>},
    {"layout-data",           Format::LayoutDataXml,              kSchemaValid, false, createLayoutData, true},
    {"layout-data-png",       Format::LayoutDataXmlPng,           kBytes,       false, create<OrvDiffLayoutDataXmlPngFileEngine>},
    {"paged-layout-data",     Format::PagedLayoutDataXml,         kNormalized,  false, create<OrvDiffPagedLayoutDataXmlFileEngine>},
    {"paged-layout-data-png", Format::PagedLayoutDataXmlPng,      kBytes,       false, create<OrvDiffPagedLayoutDataXmlPngFileEngine>},
    {"drilled-report-spec",   Format::DrilledReportSpec,          kNormalized,  false, create<OrvDiffDrilledReportSpecEngine>},
    {"ref-query-items",       Format::RefQueryItem,               kNormalized,  false, create<OrvDiffRefQueryItemEngine>},
    {"drill-up-down-state",   Format::DrillUpDownState,           kNormalized,  false, create<OrvDiffDrillUpDownStateEngine>},
    {"ctx-metadata",          Format::CtxMetadataXml,             kWellFormed,  false, create<OrvDiffCtxMetadataXmlFileEngine>, true},
    {"drill-through-targets", Format::AuthoredDThroughTargetsXml, kWellFormed,  false, create<OrvDiffAuthoredDThroughTargetsXmlFileEngine>, true},
    {"pdf",                   Format::Pdf,                        kScript,      false, create<OrvDiffPdfFileEngine>},
    {"xlsx",                  Format::Xlsx,                       kScript,      false, create<OrvDiffXlsxFileEngine>},
    {"single-xls",            Format::SingleXls,                  kNormalized,  false, create<OrvDiffSingleXlsFileEngine>},
    {"csv",                   Format::Csv,                        kBytes,       false, create<OrvDiffCsvFileEngine>},
    {"json",                  Format::Json,                       kBytes,       false, create<OrvDiffJsonFileEngine>},
    {"csi",                   Format::Csi,                        kText,        false, create<OrvDiffCsiFileEngine>},
    {"di",                    Format::DiTree,                     kText,        false, create<OrvDiffDiTreeFileEngine>},
    {"vmd",                   Format::Vmd,                        kStatistics,  false, create<OrvDiffVmdFileEngine>},
    {"cgs",                   Format::Cgs,                        kNormalized,  true,  createCgs},
    {"prp",                   Format::Prp,                        kText,        true,  createPrp},
};
// clang-format on

constexpr bool haveDistinctNames() {
  for (const OrvDiffFormat& one : kFormats) {
    int count = 0;
    for (const OrvDiffFormat& other : kFormats) {
      count += one.name == other.name ? 1 : 0;
    }
    if (count != 1) {
      return false;
    }
  }
  return true;
}
static_assert(haveDistinctNames(), "a name selects one format");

}  // namespace

const std::vector<OrvDiffFormat>& OrvDiffFormats::all() {
  static const std::vector<OrvDiffFormat> formats(std::begin(kFormats), std::end(kFormats));
  return formats;
}

const OrvDiffFormat* OrvDiffFormats::find(std::string_view name) {
  const auto found = std::find_if(all().begin(), all().end(), [name](const OrvDiffFormat& format) {
    return format.name == name;
  });
  return found != all().end() ? &*found : nullptr;
}
