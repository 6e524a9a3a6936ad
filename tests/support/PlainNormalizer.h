#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>
#include <xercesc/util/PlatformUtils.hpp>

#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/formats/OrvDiffFormats.h"

/// The pattern lists to try, and the slow, obvious way of applying one, which the library's own way
/// must equal byte for byte. For tests, fuzz targets and benchmarks.

/// Removes carriage returns, then applies pattern by pattern through ICU, each with its own
/// conversions.
inline std::string normalizePlainly(const std::string& text, const OrvPatternList& patterns) {
  OrvTextBuffer buffer = OrvDiffLib::strdupnew(text.c_str());
  OrvDiffNormalizationPattern("\r", nullptr).normalizeText(buffer);
  for (const OrvDiffNormalizationPattern* const pattern : patterns) {
    pattern->normalizeText(buffer);
  }
  return buffer.get();
}

/// The library's own way.
inline std::string normalize(const std::string& text, const OrvPatternList& patterns) {
  OrvTextBuffer master = OrvDiffLib::strdupnew(text.c_str());
  OrvTextBuffer actual = OrvDiffLib::strdupnew("");
  OrvDiffLib::cleanse(master, actual, patterns);
  return master.get();
}

struct NamedPatterns {
  std::string name;
  OrvSharedPatternList patterns;
};

/// Every catalogue row by itself.
inline std::vector<NamedPatterns> catalogueRows() {
  using Catalogue = OrvDiffNormalizationPatterns;
  std::vector<NamedPatterns> rows;
  for (int id = 0; id <= Catalogue::eReportSpecNamespaceVersion; ++id) {
    rows.push_back({"row " + std::to_string(id), {}});
    rows.back().patterns.add(
        Catalogue::getPattern(static_cast<Catalogue::OrvNormalizationPatternsEnum>(id)));
  }
  return rows;
}

/// The list of every format that has one, under the format's name.
inline std::vector<NamedPatterns> formatPatterns() {
  xercesc::XMLPlatformUtils::Initialize();  // some engines need it
  std::vector<NamedPatterns> lists;
  std::vector<std::unique_ptr<OrvDiffFileEngine>> engines;  // destroying one resets the catalogue
  for (const OrvDiffFormat& format : OrvDiffFormats::all()) {
    engines.push_back(format.createEngine({nullptr, "type"}));
    const OrvPatternList* const list = engines.back()->getCleansingPatterns();
    if (list != nullptr && !list->empty()) {
      lists.push_back({std::string(format.name), {}});
      std::for_each(list->begin(), list->end(),
                    [&](const auto* pattern) { lists.back().patterns.add(pattern); });
    }
  }
  engines.clear();
  xercesc::XMLPlatformUtils::Terminate();
  return lists;
}

/// Every catalogue row, then the formats' lists, without those that an earlier format has too.
inline std::vector<NamedPatterns> patternListsToTry() {
  std::vector<NamedPatterns> lists = catalogueRows();
  for (NamedPatterns& format : formatPatterns()) {
    if (std::none_of(lists.begin(), lists.end(), [&](const NamedPatterns& other) {
          return other.patterns.list() == format.patterns.list();
        })) {
      lists.push_back(std::move(format));
    }
  }
  return lists;
}

/// The longest list there is.
inline OrvSharedPatternList htmlPatterns() {
  const std::vector<NamedPatterns> lists = formatPatterns();
  return std::find_if(lists.begin(), lists.end(), [](const auto& l) { return l.name == "html"; })
      ->patterns;
}
