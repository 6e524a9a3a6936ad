#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>
#include <xercesc/util/PlatformUtils.hpp>

#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/formats/OrvDiffFormats.h"

/// Shared by the differential test and the fuzz target: the pattern lists to try and the slow,
/// obvious way of applying one, which the library's shared path must equal byte for byte.

inline std::string toString(const OrvTextBuffer& buffer) {
  return buffer.get();
}

/// Carriage returns, then pattern by pattern, each through ICU with its own conversions.
inline std::string normalizePlainly(const std::string& text, const OrvPatternList& patterns) {
  OrvTextBuffer buffer = OrvDiffLib::strdupnew(text.c_str());
  OrvDiffNormalizationPattern("\r", nullptr).normalizeText(buffer);
  for (const OrvDiffNormalizationPattern* const pattern : patterns) {
    pattern->normalizeText(buffer);
  }
  return toString(buffer);
}

/// The library's own way.
inline std::string normalize(const std::string& text, const OrvPatternList& patterns) {
  OrvTextBuffer master = OrvDiffLib::strdupnew(text.c_str());
  OrvTextBuffer actual = OrvDiffLib::strdupnew("");
  OrvDiffLib::cleanse(master, actual, patterns);
  return toString(master);
}

constexpr int kCatalogueRows = 37;

inline const OrvDiffNormalizationPattern* row(int index) {
  return OrvDiffNormalizationPatterns::getPattern(
      static_cast<OrvDiffNormalizationPatterns::OrvNormalizationPatternsEnum>(index));
}

inline OrvPatternList rows(std::initializer_list<int> indices) {
  OrvPatternList list;
  for (const int index : indices) {
    list.push_back(row(index));
  }
  return list;
}

/// The patterns of a format's engine, or null. The engine, and so the list, lives as long as the
/// program.
inline const OrvPatternList* patternsOf(const OrvDiffFormat& format) {
  static std::map<std::string_view, std::unique_ptr<OrvDiffFileEngine>> engines;
  std::unique_ptr<OrvDiffFileEngine>& engine = engines[format.name];
  if (engine == nullptr) {
    xercesc::XMLPlatformUtils::Initialize();  // for the engines that validate XML
    OrvFormatArguments arguments;
    arguments.outputDirectoryTypeName = "any";
    engine = format.createEngine(arguments);
  }
  return engine->getCleansingPatterns();
}

/// The longest list there is.
inline OrvPatternList htmlPatterns() {
  return *patternsOf(*OrvDiffFormats::find("html"));
}

/// Every catalogue row alone, then every list of several that a format has.
inline std::vector<OrvPatternList> patternListsToTry() {
  std::vector<OrvPatternList> lists;
  for (int index = 0; index < kCatalogueRows; ++index) {
    lists.push_back(rows({index}));
  }
  for (const OrvDiffFormat& format : OrvDiffFormats::all()) {
    const OrvPatternList* const list = patternsOf(format);
    if (list != nullptr && list->size() > 1 &&
        std::find(lists.begin(), lists.end(), *list) == lists.end()) {
      lists.push_back(*list);
    }
  }
  return lists;
}
