#pragma once

#include <cstddef>
#include <initializer_list>
#include <string>

#include "orvdiff/compare/OrvDiffNormalizationPatterns.h"
#include "orvdiff/engine/OrvDiffFileEngine.h"
#include "orvdiff/orvdiff_export.h"

/// Base of the engines that compare outputs as normalised text.
///
/// A concrete engine adds its patterns in its constructor, in the order in which they apply. They
/// stay valid as long as the engine lives. Destroying an engine resets the catalogue, so destroying
/// the last one frees every compiled pattern.
class ORVDIFF_API OrvDiffTextFileTypeEngine : public OrvDiffFileEngine {
 public:
  explicit OrvDiffTextFileTypeEngine(const char* subFolder);
  ~OrvDiffTextFileTypeEngine() override;

  void verifyOutput(const OrvDiffListenerSet& listeners, const char* location,
                    OrvTestInfo* testInfo) override;
  std::string getOutputDirectoryTypeName() const override = 0;
  std::string getMasterFileGlobExpression(const std::string& location) const override = 0;

  /// Returns a missing file (the master first), a pass if the texts are equal after normalisation,
  /// else a normalised difference, or a plain one if the engine has no patterns. Carriage returns
  /// never count. An in-memory text ends at its first NUL; its stream is left unfrozen.
  OrvDiffResult* performDiff(const std::string& masterName, const std::string& actualName,
                             std::strstream* inMemoryOutput) override;

  const OrvPatternList* getCleansingPatterns() const override;

  /// Adds a pattern of the host's to those of the format: at `position` of
  /// `getCleansingPatterns()`, or behind the last one if there are fewer. The engine borrows it. A
  /// null one raises `VELAssertError`. Not during a verification.
  void insertCleansingPattern(std::size_t position, const OrvDiffNormalizationPattern* pattern);

 protected:
  /// Appends a pattern, which the engine borrows unless it is the catalogue's. A null one raises
  /// `VELAssertError`.
  void addCleansingPattern(const OrvDiffNormalizationPattern* pattern);

  /// Appends patterns of the catalogue in this order.
  void addCleansingPatterns(
      std::initializer_list<OrvDiffNormalizationPatterns::OrvNormalizationPatternsEnum> ids);

 private:
  OrvSharedPatternList m_cleansingPatterns;
};
