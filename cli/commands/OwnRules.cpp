#include "cli/commands/OwnRules.h"

#include <iostream>
#include <memory>
#include <string_view>
#include <vector>

#include "cli/custom/FormatList.h"
#include "cli/custom/OwnEngines.h"
#include "cli/custom/RulesInWords.h"
#include "cli/system/CommandError.h"
#include "cli/terminal/Printable.h"
#include "orvdiff/compare/OrvComparisonObserver.h"
#include "orvdiff/registry/OrvDiffResult.h"

namespace {

/// Collects the rules that help a comparison to pass.
class HelpWatch : public OrvComparisonObserver {
 public:
  HelpWatch() { setCurrent(this); }
  ~HelpWatch() override { setCurrent(nullptr); }
  HelpWatch(const HelpWatch&) = delete;
  HelpWatch& operator=(const HelpWatch&) = delete;

  const std::vector<std::string>& rules() const { return m_rules; }

 private:
  void sawEqualBlock(std::string_view /*block*/) override {}
  void sawEqualFiles() override {}
  void sawFiles(std::string_view /*master*/, std::string_view /*actual*/) override {}
  void sawChangeBy(const OrvDiffNormalizationPattern* /*pattern*/) override {}
  void sawNormalized(std::string_view /*master*/, std::string_view /*actual*/) override {}
  void sawHelpOf(std::string_view name) override { m_rules.emplace_back(name); }

  std::vector<std::string> m_rules;
};

}  // namespace

void explainOwnRules(const OwnFormat& format, OrvDiffFileEngine& engine, const std::string& master,
                     const std::string& actual) {
  std::cout << "Format " << format.name << " of the suite is compared by " << comparisonOf(format);
  if (!format.definedAt.file.empty()) {
    std::cout << " (" << printable(format.definedAt.file) << ':' << format.definedAt.line << ')';
  }
  std::cout << ".\n";
  for (const std::string& rule : rulesInWords(format)) {
    std::cout << "    " << printable(rule) << '\n';
  }
  if (actual.empty()) {
    return;
  }
  const std::string obstacle = obstacleOf(engine);
  if (!obstacle.empty()) {
    throw CommandError(obstacle);
  }
  const HelpWatch watch;
  const std::unique_ptr<const OrvDiffResult> result(engine.performDiff(master, actual, nullptr));
  if (!result->isPassed()) {
    std::cout << "The files differ in more than the rules allow.\n";
  } else if (watch.rules().empty()) {
    std::cout << "The files pass without the help of a rule.\n";
  } else {
    std::cout << "The files pass with the help of:\n";
    for (const std::string& rule : watch.rules()) {
      std::cout << "    " << printable(rule) << '\n';
    }
  }
}
