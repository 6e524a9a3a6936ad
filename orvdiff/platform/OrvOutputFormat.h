#pragma once

#include <cstdint>

namespace orvdiff::host {

/// The output format of a report run; stands in for the host's own enumeration
/// (docs/host-classes.md). The registry uses a value only as an ordered key, so a host with further
/// formats may register engines under any other value.
enum class OrvOutputFormat : std::int32_t {
  Nao,
  PromptNao,
  Cgs,
  DrilledReportSpec,
  RefQueryItem,
  DrillUpDownState,
  PagedLayoutDataXml,
  RawXml,
  Mht,
  Ra,
  Html,
  Xhtml,
  Xml,
  Viz,
  Xls,
  Xlwa,
  Prp,
  HtmlPng,
  LayoutDataXmlPng,
  PagedLayoutDataXmlPng,
  RawXmlPng,
  XhtmlPng,
  CtxMetadataXml,
  AuthoredDThroughTargetsXml,
  LayoutDataXml,
  Pdf,
  Xlsx,
  SingleXls,
  Csv,
  Json,
  Csi,
  DiTree,
  Vmd,
};

}  // namespace orvdiff::host

using orvdiff::host::OrvOutputFormat;
