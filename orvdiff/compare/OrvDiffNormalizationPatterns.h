#pragma once

#include <cstddef>
#include <list>
#include <memory>

#include "orvdiff/compare/OrvDiffNormalizationPattern.h"
#include "orvdiff/orvdiff_export.h"

/// Patterns in the order in which they are applied. The list borrows them.
using OrvPatternList = std::list<const OrvDiffNormalizationPattern*>;

/// The process-wide catalogue of the substitutions that make report outputs comparable.
///
/// A pattern is compiled when it is first asked for and shared from then on. No locks: for the one
/// thread that verifies.
class ORVDIFF_API OrvDiffNormalizationPatterns {
 public:
  enum OrvNormalizationPatternsEnum {
    eScriptElement,
    eChartNameAttribute,
    eNextNameAndIdAttributes,
    eCopyrightMetaTag,
    eGeneratorIdMetaTag,
    eTrademarkMetaTag,
    eUaCompatibleMetaTag,
    eEventHandlerAttribute,
    eImageSourcePrefix,
    eCtxAttribute,
    eNameAttribute,
    ePromptIdAttribute,
    eForAttribute,
    eAriaLabelledByAttribute,
    eAriaLabelledByHeadersAttribute,
    eIdAttribute,
    eChartTempName,
    eRemoveReferenceCall,
    eCoordsAttribute,
    eCoordElement,
    eLabelForTag,
    eQuotedPrintableEquals,
    eBinDirectory,
    eExcelDataElement,
    eExponentNumber,
    eDecimalNumber,
    eQuotedChartTempName,
    eFilenameElement,
    eAreaElement,
    eAreaTag,
    ePngContent,
    eLineBreak,
    eSoftLineBreak,
    eWidthStyle,
    eAxisValueAsStringLine,
    eTitleAttribute,
    eReportSpecNamespaceVersion,
  };

  /// The shared pattern of `id`; the catalogue owns it. The pointer is good until `reset`, or, for
  /// one added to an engine, as long as that engine lives.
  static const OrvDiffNormalizationPattern* getPattern(OrvNormalizationPatternsEnum id);

  /// The name of a pattern with the expression of a row, such as "ScriptElement"; null for others.
  static const char* getName(const OrvDiffNormalizationPattern& pattern);

  /// Forgets every compiled pattern; the next `getPattern` builds a new one. Patterns that no
  /// living engine holds are freed at once, the others with the last engine that does.
  static void reset();

 private:
  friend class OrvSharedPatternList;

  struct OrvNormalizationPatternEntry {
    OrvNormalizationPatternsEnum patternId;
    const char* regularExpression;
    const char* replacementText;  ///< null: matches are deleted
    std::shared_ptr<const OrvDiffNormalizationPattern> cachedPattern;
    const char* name;  ///< the enumerator's, without its "e"
  };

  /// Shares in the ownership of `pattern` if it is the catalogue's, else null.
  static std::shared_ptr<const OrvDiffNormalizationPattern> share(
      const OrvDiffNormalizationPattern* pattern);

  static const unsigned short m_numPatternsInArray = 37;
  static ORVDIFF_NO_EXPORT OrvNormalizationPatternEntry
      m_normalizationPatternArray[m_numPatternsInArray];
};

/// A pattern list that shares ownership of the catalogue's patterns, so they outlive a `reset`.
/// Any other pattern is borrowed: the caller keeps it alive.
class ORVDIFF_API OrvSharedPatternList {
 public:
  /// Appends `pattern`, which must not be null. Duplicates are kept: a pattern added twice is
  /// applied twice.
  void add(const OrvDiffNormalizationPattern* pattern);

  /// The same at `position` of the list, at most its size.
  void insert(std::size_t position, const OrvDiffNormalizationPattern* pattern);

  const OrvPatternList& list() const { return m_list; }

 private:
  OrvPatternList m_list;
  std::list<std::shared_ptr<const OrvDiffNormalizationPattern>> m_shares;
};
