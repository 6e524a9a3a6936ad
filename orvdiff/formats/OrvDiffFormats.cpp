#include "orvdiff/formats/OrvDiffFormats.h"

#include <algorithm>

#include "orvdiff/formats/OrvDiffImageEngines.h"
#include "orvdiff/formats/OrvDiffTextEngines.h"

namespace {

template <typename Engine>
std::unique_ptr<OrvDiffFileEngine> create(const OrvFormatArguments& arguments) {
  return std::make_unique<Engine>(arguments.subFolder);
}

std::unique_ptr<OrvDiffFileEngine> createCgs(const OrvFormatArguments& arguments) {
  return std::make_unique<OrvDiffCgsFileEngine>(
      arguments.subFolder, arguments.outputDirectoryTypeName, arguments.masterSubFolder,
      arguments.fileNameSuffix);
}

std::unique_ptr<OrvDiffFileEngine> createPrp(const OrvFormatArguments& arguments) {
  return std::make_unique<OrvDiffPrpFileEngine>(
      arguments.subFolder, arguments.outputDirectoryTypeName, arguments.masterSubFolder);
}

constexpr std::string_view kNormalized = "normalised text";
constexpr std::string_view kText = "text, carriage returns aside";
constexpr std::string_view kBytes = "byte identity";

using Format = OrvOutputFormat;

// clang-format off
constexpr OrvDiffFormat kFormats[] = {
    {"html",                   Format::Html,                  kNormalized, false, create<OrvDiffHtmlFileEngine>},
    {"html-png",               Format::HtmlPng,               kBytes,      false, create<OrvDiffHtmlPngFileEngine>},
    {"xhtml",                  Format::Xhtml,                 kNormalized, false, create<OrvDiffXhtmlFileEngine>},
    {"xhtml-png",              Format::XhtmlPng,              kBytes,      false, create<OrvDiffXhtmlPngFileEngine>},
    {"mht",                    Format::Mht,                   kNormalized, false, create<OrvDiffMhtFileEngine>},
    {"ra",                     Format::Ra,                    kNormalized, false, create<OrvDiffRaFileEngine>},
    {"nao",                    Format::Nao,                   kNormalized, false, create<OrvDiffNaoFileEngine>},
    {"prompt-nao",             Format::PromptNao,             kNormalized, false, create<OrvDiffPnaoFileEngine>},
    {"xls",                    Format::Xls,                   kNormalized, false, create<OrvDiffXlsFileEngine>},
    {"xlwa",                   Format::Xlwa,                  kNormalized, false, create<OrvDiffXlwaFileEngine>},
    {"xml",                    Format::Xml,                   kText,       false, create<OrvDiffXmlFileEngine>},
    {"viz",                    Format::Viz,                   kText,       false, create<OrvDiffVizFileEngine>},
    {"raw-xml",                Format::RawXml,                kNormalized, false, create<OrvDiffRawXmlFileEngine>},
    {"raw-xml-png",            Format::RawXmlPng,             kBytes,      false, create<OrvDiffRawXmlPngFileEngine>},
    {"layout-data-png",        Format::LayoutDataXmlPng,      kBytes,      false, create<OrvDiffLayoutDataXmlPngFileEngine>},
    {"paged-layout-data",      Format::PagedLayoutDataXml,    kNormalized, false, create<OrvDiffPagedLayoutDataXmlFileEngine>},
    {"paged-layout-data-png",  Format::PagedLayoutDataXmlPng, kBytes,      false, create<OrvDiffPagedLayoutDataXmlPngFileEngine>},
    {"drilled-report-spec",    Format::DrilledReportSpec,     kNormalized, false, create<OrvDiffDrilledReportSpecEngine>},
    {"ref-query-items",        Format::RefQueryItem,          kNormalized, false, create<OrvDiffRefQueryItemEngine>},
    {"drill-up-down-state",    Format::DrillUpDownState,      kNormalized, false, create<OrvDiffDrillUpDownStateEngine>},
    {"cgs",                    Format::Cgs,                   kNormalized, true,  createCgs},
    {"prp",                    Format::Prp,                   kText,       true,  createPrp},
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
static_assert(haveDistinctNames(), "a format's name selects it, so it must be its own");

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

const OrvPatternList* OrvDiffFormats::getCleansingPatterns(const OrvDiffFileEngine& engine) {
  const auto* const text = dynamic_cast<const OrvDiffTextFileTypeEngine*>(&engine);
  return text != nullptr ? &text->getCleansingPatterns() : nullptr;
}
