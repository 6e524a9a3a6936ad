#pragma once

#include <cstdint>

/// The output format of a report run. The registry uses a value only as an ordered key, so a host
/// with formats of its own may register engines under any further value.
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
