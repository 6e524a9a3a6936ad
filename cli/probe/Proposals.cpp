#include "cli/probe/Proposals.h"

#include <algorithm>
#include <set>
#include <utility>

#include "cli/probe/Rule.h"
#include "cli/probe/SampleText.h"
#include "cli/probe/UnanchoredProposals.h"
#include "cli/probe/ValueExpression.h"
#include "cli/probe/VariationGroup.h"
#include "cli/terminal/Printable.h"

namespace {

constexpr std::size_t kLongestValue = 200;
constexpr std::size_t kMostPatterns = 100;
constexpr std::size_t kSamples = 3;

Rule ruleOf(const Anchor& anchor, const std::string& value) {
  return {quotedExpression(anchor.left) + value + quotedExpression(anchor.right),
          anchor.left + anchor.right};
}

/// Whether the rule's matches end where the values do: what stands right behind is not the run's.
bool matchesValueOnly(const Rule& rule, const Anchor& anchor, const Variation& variation) {
  const std::string rest = anchor.right + variation.after.substr(anchor.right.size(), 1);
  return applied(rule, anchor.left + variation.valueA + rest) == anchor.left + rest &&
         applied(rule, anchor.left + variation.valueB + rest) == anchor.left + rest;
}

class Proposer {
 public:
  Proposer(const Variations& variations, RunTexts& texts)
      : m_variations(variations), m_texts(texts) {}

  Proposals propose() {
    for (const VariationGroup& group : groupVariations(m_variations.all)) {
      proposeFor(group);
    }
    for (const auto& rules : {orderRules(m_variations.all), blankRules(m_variations.all)}) {
      for (const UnanchoredRule& rule : rules) {
        addUnanchored(rule);
      }
    }
    declineOthers();
    std::stable_sort(m_found.patterns.begin(), m_found.patterns.end(),
                     [](const Proposal& a, const Proposal& b) { return a.places > b.places; });
    nameAll();
    return std::move(m_found);
  }

 private:
  void decline(const Variation& variation, const std::string& reason,
               const std::string& expression = {}) {
    m_found.declined.emplace(declinedKey(variation.valueA, variation.valueB),
                             Declined{reason, expression});
  }

  void declineAll(const VariationGroup& group, const std::string& reason,
                  const std::string& expression = {}) {
    for (const Variation* const variation : group.members) {
      decline(*variation, reason, expression);
    }
  }

  void declineOthers() {
    for (const Variation& variation : m_variations.all) {
      if (variation.kind == ValueKind::AttributeOrder) {
        decline(variation, "the same attributes in another order, which a pattern cannot sort");
      } else if (variation.kind == ValueKind::WhiteSpace) {
        decline(variation, "blanks where the other run has none");
      } else if (anchorsOf(variation).empty()) {
        decline(variation, "no stable text near it to hold on to");
      }
    }
  }

  void proposeFor(const VariationGroup& group) {
    const std::vector<std::string> values = group.values();
    const bool areValues = std::all_of(values.begin(), values.end(), [](const std::string& value) {
      return !value.empty() && value.size() <= kLongestValue;
    });
    const auto value = areValues ? expressionFor(group.kind, values) : std::nullopt;
    if (!value) {
      declineAll(group, areValues ? "the values have no form in common"
                                  : "something was added, removed or rewritten");
      return;
    }
    const std::string expression = ruleOf(group.anchor, *value).expression;
    if (!looksVolatile(group)) {
      declineAll(group, "may be data: neither its form nor what stands around it says otherwise",
                 expression);
    } else if (m_found.patterns.size() >= kMostPatterns) {
      declineAll(group, "there are too many patterns already", expression);
    } else {
      anchorAndAdd(group, *value);
    }
  }

  /// Holds on to more of the surroundings, and splits the group by them, if that keeps the pattern
  /// from matching something else.
  void anchorAndAdd(const VariationGroup& group, const std::string& value) {
    constexpr std::size_t kMostOthers = 5000;
    const Reach reach = reachOf(*compiled(ruleOf(group.anchor, value)), group.anchor, m_texts,
                                m_variations.places, kMostOthers);
    for (const VariationGroup& part : anchored(group, reach.matches)) {
      addAnchored(part, value);
    }
  }

  void addAnchored(const VariationGroup& group, const std::string& value) {
    const Rule rule = ruleOf(group.anchor, value);
    VariationGroup explained = group;
    explained.members.clear();
    for (const Variation* const variation : group.members) {
      if (makesEqual(rule, *variation) && matchesValueOnly(rule, group.anchor, *variation)) {
        explained.members.push_back(variation);
      } else {
        decline(*variation, "no pattern was found that matches the value and no more");
      }
    }
    if (explained.members.empty()) {
      return;
    }
    Reach reach = reachOf(*compiled(rule), group.anchor, m_texts, m_variations.places, kSamples);
    if (reach.others >= explained.places()) {
      declineAll(explained,
                 "a pattern for it would also match " + countOf(reach.others, "other place"),
                 rule.expression);
      return;
    }
    const Variation& first = *explained.members.front();
    std::vector<std::string> examples;
    for (const std::string& one : {first.valueA, first.valueB}) {
      examples.push_back(group.anchor.left + one + group.anchor.right);
    }
    add(rule, explained, std::move(reach), examples,
        textThatStays(rule, value, first.valueA, m_texts));
  }

  void addUnanchored(const UnanchoredRule& rule) {
    add(rule.rule, rule.group,
        reachOf(*compiled(rule.rule), {}, m_texts, m_variations.places, kSamples), {rule.example},
        applied(rule.rule, rule.example));
  }

  void add(const Rule& rule, const VariationGroup& group, Reach reach,
           const std::vector<std::string>& examples, const std::string& stays) {
    Proposal proposal;
    proposal.kind = group.kind;
    proposal.anchor = group.anchor;
    proposal.expression = rule.expression;
    proposal.replacement = rule.replacement;
    proposal.stays = stays;
    proposal.places = group.places();
    proposal.files = group.files();
    proposal.reach = std::move(reach);
    for (const std::string& text : examples) {
      proposal.examples.emplace_back(text, applied(rule, text));
    }
    m_found.patterns.push_back(std::move(proposal));
  }

  void nameAll() {
    std::set<std::string> names;
    for (Proposal& proposal : m_found.patterns) {
      const std::string base = slugOf(proposal.anchor) + std::string(slugOf(proposal.kind));
      proposal.name = base;
      for (int number = 2; !names.insert(proposal.name).second; ++number) {
        proposal.name = base + '-' + std::to_string(number);
      }
      proposal.why = std::string(nameOf(proposal.kind)) + " that differs from run to run, in " +
                     std::to_string(proposal.files) + " of " +
                     countOf(m_texts.fileCount(), "file") + " (found by orvdiff probe)";
    }
  }

  const Variations& m_variations;
  RunTexts& m_texts;
  Proposals m_found;
};

}  // namespace

std::string declinedKey(const std::string& valueA, const std::string& valueB) {
  return valueA + '\0' + valueB;
}

Proposals propose(const Variations& variations, RunTexts& texts) {
  return Proposer(variations, texts).propose();
}

ProposedPatterns::ProposedPatterns(const std::vector<Proposal>& proposals) {
  for (const Proposal& proposal : proposals) {
    m_patterns.push_back(compiled({proposal.expression, proposal.replacement}));
    m_list.push_back(m_patterns.back().get());
  }
}
