#pragma once

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"

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

/// The longest list there is.
inline OrvPatternList htmlPatterns() {
  return rows({31, 0, 1, 2, 3, 4, 5, 6, 7, 11, 18, 13, 15, 14, 9, 12, 10});
}

/// Every catalogue row alone, then the lists of the engines that combine several.
inline std::vector<OrvPatternList> patternListsToTry() {
  std::vector<OrvPatternList> lists;
  for (int index = 0; index < kCatalogueRows; ++index) {
    lists.push_back(rows({index}));
  }
  lists.push_back(htmlPatterns());
  lists.push_back(rows({0, 1, 2, 3, 4, 35, 5, 6, 7, 9, 15, 10, 18, 20}));  // NAO
  lists.push_back(rows({32, 31, 21, 0, 1, 8, 3, 4, 5, 6}));                // MHT
  lists.push_back(rows({16, 17, 22}));                                     // CGS
  lists.push_back(rows({18, 36}));
  lists.push_back(rows({19, 27}));
  lists.push_back(rows({0, 8}));
  lists.push_back(rows({0, 1, 18}));
  return lists;
}
