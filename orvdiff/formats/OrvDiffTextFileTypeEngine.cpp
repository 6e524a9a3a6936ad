#include "orvdiff/formats/OrvDiffTextFileTypeEngine.h"

#include <algorithm>
#include <optional>

#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/engine/InMemoryOutput.h"
#include "orvdiff/platform/VELAssert.h"

namespace {

/// Where a null pattern is reported; hosts know the line.
constexpr VELPlace kNullPatternPlace = {"OrvDiffTextFileTypeEngine", 68};

}  // namespace

OrvDiffTextFileTypeEngine::OrvDiffTextFileTypeEngine(const char* subFolder)
    : OrvDiffFileEngine(subFolder) {}

OrvDiffTextFileTypeEngine::~OrvDiffTextFileTypeEngine() {
  OrvDiffNormalizationPatterns::reset();  // only releases, so it cannot throw
}

void OrvDiffTextFileTypeEngine::verifyOutput(const OrvDiffListenerSet& listeners,
                                             const char* location, OrvTestInfo* testInfo) {
  OrvDiffFileEngine::verifyOutput(listeners, location, testInfo);
}

OrvDiffResult* OrvDiffTextFileTypeEngine::performDiff(const std::string& masterName,
                                                      const std::string& actualName,
                                                      std::strstream* inMemoryOutput) {
  std::optional<InMemoryOutput> output;
  if (inMemoryOutput != nullptr) {
    output.emplace(*inMemoryOutput);
  }
  return OrvDiffLib::textFileComparison(masterName, actualName, m_cleansingPatterns.list(), false,
                                        output ? output->text() : nullptr);
}

const OrvPatternList* OrvDiffTextFileTypeEngine::getCleansingPatterns() const {
  return &m_cleansingPatterns.list();
}

void OrvDiffTextFileTypeEngine::insertCleansingPattern(std::size_t position,
                                                       const OrvDiffNormalizationPattern* pattern) {
  VEL_ASSERT_NAMED(pattern, "Pattern to insert");
  m_cleansingPatterns.insert(std::min(position, m_cleansingPatterns.list().size()), pattern);
}

void OrvDiffTextFileTypeEngine::addCleansingPattern(const OrvDiffNormalizationPattern* pattern) {
  VEL_ASSERT_AT(pattern, kNullPatternPlace);
  m_cleansingPatterns.add(pattern);
}

void OrvDiffTextFileTypeEngine::addCleansingPatterns(
    std::initializer_list<OrvDiffNormalizationPatterns::OrvNormalizationPatternsEnum> ids) {
  for (const auto id : ids) {
    addCleansingPattern(OrvDiffNormalizationPatterns::getPattern(id));
  }
}
