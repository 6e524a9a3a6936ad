#include "cli/workers/AppliedRules.h"

#include <cstring>
#include <exception>
#include <optional>
#include <string>

#include "cli/record/ContentHash.h"
#include "orvdiff/compare/OrvDiffLib.h"
#include "orvdiff/engine/OrvDiffFileEngine.h"

namespace {

constexpr const char* kCarriageReturns = "CarriageReturn";

std::string nameOf(const OrvDiffNormalizationPattern& pattern) {
  const char* const name = OrvDiffNormalizationPatterns::getName(pattern);
  return name != nullptr ? name : pattern.getExpression();
}

/// Both texts of a pair, on their way through the rules.
class Texts {
 public:
  Texts(OrvTextBuffer master, OrvTextBuffer output)
      : m_master(std::move(master)), m_output(std::move(output)) {}

  /// Whether applying `rules` changes one of the texts.
  bool apply(const OrvPatternList& rules) {
    const std::string master = m_master.get();
    const std::string output = m_output.get();
    OrvDiffLib::cleanse(m_master, m_output, rules);
    return master != m_master.get() || output != m_output.get();
  }

  std::string masterHash() const { return contentHash(m_master.get()); }
  std::string outputHash() const { return contentHash(m_output.get()); }

 private:
  OrvTextBuffer m_master;
  OrvTextBuffer m_output;
};

std::optional<Texts> readTexts(const PairRecord& record) {
  OrvFileHandle master(record.master.c_str(), "r");
  OrvFileHandle output(record.output.c_str(), "r");
  if (master == nullptr || output == nullptr) {
    return std::nullopt;
  }
  return Texts(OrvDiffLib::slurpFile(master), OrvDiffLib::slurpFile(output));
}

}  // namespace

void applyRules(const OrvDiffFileEngine& engine, PairRecord& record) {
  const OrvPatternList* const rules = engine.getCleansingPatterns();
  if (rules == nullptr) {
    return;
  }
  try {
    std::optional<Texts> texts = readTexts(record);
    if (!texts) {
      return;
    }
    if (texts->apply({})) {
      record.rules.emplace_back(kCarriageReturns);
    }
    for (const OrvDiffNormalizationPattern* const rule : *rules) {
      if (texts->apply({rule})) {
        record.rules.push_back(nameOf(*rule));
      }
    }
    record.masterFile.normalizedHash = texts->masterHash();
    record.outputFile.normalizedHash = texts->outputHash();
  } catch (const std::exception&) {
    record.rules.clear();  // the files have changed or gone since; the verdict stands
  }
}
