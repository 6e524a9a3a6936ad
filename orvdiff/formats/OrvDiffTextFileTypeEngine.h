#pragma once

#include <initializer_list>
#include <string>

#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/engine/OrvDiffFileEngine.h"
#include "orvdiff/orvdiff_export.h"

/// Base of the engines whose outputs are compared as normalised text.
///
/// A concrete engine adds its patterns in its constructor, in the order in which they are to be
/// applied. The patterns stay valid as long as the engine lives; destroying an engine resets the
/// catalogue, so the last one frees every compiled pattern.
class ORVDIFF_API OrvDiffTextFileTypeEngine : public OrvDiffFileEngine {
 public:
  explicit OrvDiffTextFileTypeEngine(const char* subFolder);
  ~OrvDiffTextFileTypeEngine() override;

  void verifyOutput(const OrvDiffListenerSet& listeners, const char* location,
                    OrvTestInfo* testInfo) override;
  std::string getOutputDirectoryTypeName() const override = 0;
  std::string getMasterFileGlobExpression(const std::string& location) const override = 0;

  /// Missing files (the master first), a pass when the texts are equal after normalisation, else a
  /// normalised difference, or a plain one when the engine has no patterns. Carriage returns never
  /// count. An in-memory text ends at its first NUL; its stream is left unfrozen.
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;

  /// The patterns that both texts go through before they are compared. Good while the engine lives.
  const OrvPatternList& getCleansingPatterns() const { return m_cleansingPatterns.list(); }

 protected:
  /// Appends a pattern; a null one raises `VELAssertError`.
  void addCleansingPattern(const OrvDiffNormalizationPattern* pattern);

  /// Appends patterns of the catalogue, in this order.
  void addCleansingPatterns(
      std::initializer_list<OrvDiffNormalizationPatterns::OrvNormalizationPatternsEnum> ids);

 private:
  OrvSharedPatternList m_cleansingPatterns;
};
