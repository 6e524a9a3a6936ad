#include "cli/probe/Proposals.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>

#include "cli/probe/ValueExpression.h"
#include "cli/probe/VariationGroup.h"
#include "cli/terminal/Printable.h"
#include "orvdiff/compare/OrvOriginMap.h"

namespace {

constexpr std::size_t kLongestValue = 200;
constexpr std::size_t kMostPatterns = 100;
constexpr std::size_t kSamples = 3;

/// An expression, with what replaces its matches as it is meant (no "$" or "\" is in it).
struct Rule {
  std::string expression;
  std::string replacement;
};

std::string applied(const Rule& rule, const std::string& text) {
  const OrvDiffNormalizationPattern pattern(rule.expression.c_str(), rule.replacement.c_str());
  return normalized(text, {&pattern});
}

class Proposer {
 public:
  Proposer(const Variations& variations, RunTexts& texts)
      : m_variations(variations), m_texts(texts) {}

  Proposals propose() {
    for (const Variation& variation : m_variations.all) {
      if (variation.kind != ValueKind::WhiteSpace && variation.kind != ValueKind::AttributeOrder &&
          anchorsOf(variation).empty()) {
        decline(variation, "no stable text near it to hold on to");
      }
    }
    for (const VariationGroup& group : groupVariations(m_variations.all)) {
      proposeFor(group);
    }
    proposeOrders();
    proposeBlanks();
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

  void proposeFor(const VariationGroup& group) {
    const std::vector<std::string> values = group.values();
    const bool areShort = std::all_of(values.begin(), values.end(), [](const std::string& value) {
      return !value.empty() && value.size() <= kLongestValue;
    });
    const auto value = areShort ? expressionFor(group.kind, values) : std::nullopt;
    const auto rule = value ? ruleOf(group.anchor, *value) : std::nullopt;
    if (!rule) {
      declineAll(group, areShort ? "the values have no form in common"
                                 : "something was added, removed or rewritten");
    } else if (!looksVolatile(group)) {
      declineAll(group, "may be data: neither its form nor what stands around it says otherwise",
                 rule->expression);
    } else if (m_found.patterns.size() >= kMostPatterns) {
      declineAll(group, "there are too many patterns already", rule->expression);
    } else {
      anchorAndAdd(group, *value);
    }
  }

  static std::optional<Rule> ruleOf(const Anchor& anchor, const std::string& value) {
    return Rule{quotedExpression(anchor.left) + value + quotedExpression(anchor.right),
                anchor.left + anchor.right};
  }

  /// Holds on to more of the surroundings, and splits the group by them, as long as that keeps the
  /// pattern from matching something else.
  void anchorAndAdd(const VariationGroup& group, const std::string& value) {
    constexpr std::size_t kMostOthers = 5000;
    const Rule rule = *ruleOf(group.anchor, value);
    const OrvDiffNormalizationPattern pattern(rule.expression.c_str(), rule.replacement.c_str());
    const Reach reach = reachOf(pattern, group.anchor, m_texts, m_variations.places, kMostOthers);
    for (const VariationGroup& part : refined(group, reach.matches, 1)) {
      add(part, value);
    }
  }

  /// The parts to anchor on their own, given what the group's own anchor matches besides.
  static std::vector<VariationGroup> refined(const VariationGroup& group,
                                             const std::vector<OtherMatch>& others,
                                             std::size_t depth) {
    constexpr std::size_t kMostParts = 4;
    constexpr std::size_t kMostDepth = 5;
    if (others.empty() || depth >= kMostDepth) {
      return {group};
    }
    std::map<Anchor, VariationGroup> parts;
    for (const Variation* const variation : group.members) {
      const std::vector<Anchor> anchors = anchorsOf(*variation);
      const Anchor& anchor = anchors[std::min(depth, anchors.size() - 1)];
      VariationGroup& part = parts[anchor];
      part.kind = group.kind;
      part.anchor = anchor;
      part.members.push_back(variation);
    }
    if (parts.size() > kMostParts) {
      return {group};
    }
    std::vector<VariationGroup> result;
    std::size_t reach = 0;
    for (const auto& [anchor, part] : parts) {
      const std::vector<OtherMatch> left = stillMatched(group.anchor, anchor, others);
      for (VariationGroup& inner : refined(part, left, depth + 1)) {
        reach += stillMatched(group.anchor, inner.anchor, others).size();
        result.push_back(std::move(inner));
      }
    }
    return reach < others.size() ? result : std::vector<VariationGroup>{group};
  }

  /// Of what the anchor `from` matches, what the longer one, `to`, matches as well.
  static std::vector<OtherMatch> stillMatched(const Anchor& from, const Anchor& to,
                                              const std::vector<OtherMatch>& others) {
    std::vector<OtherMatch> left;
    if (to.left.size() < from.left.size() || to.right.size() < from.right.size()) {
      return others;  // found by other means; not comparable
    }
    const std::string before = to.left.substr(0, to.left.size() - from.left.size());
    const std::string after = to.right.substr(from.right.size());
    std::copy_if(
        others.begin(), others.end(), std::back_inserter(left), [&](const OtherMatch& other) {
          return other.before.size() >= before.size() &&
                 other.before.compare(other.before.size() - before.size(), before.size(), before) ==
                     0 &&
                 other.after.compare(0, after.size(), after) == 0;
        });
    return left;
  }

  void add(const VariationGroup& group, const std::string& value) {
    const Rule rule = *ruleOf(group.anchor, value);
    VariationGroup explained = group;
    explained.members.clear();
    for (const Variation* const variation : group.members) {
      if (makesEqual(rule, *variation)) {
        explained.members.push_back(variation);
      } else {
        decline(*variation, "no pattern found that makes both the same");
      }
    }
    if (!explained.members.empty()) {
      addRule(rule, explained, value);
    }
  }

  static bool makesEqual(const Rule& rule, const Variation& variation) {
    return applied(rule, variation.before + variation.valueA + variation.after) ==
           applied(rule, variation.before + variation.valueB + variation.after);
  }

  void addRule(const Rule& rule, const VariationGroup& group, const std::string& value) {
    Proposal proposal;
    proposal.kind = group.kind;
    proposal.anchor = group.anchor;
    proposal.expression = rule.expression;
    proposal.replacement = rule.replacement;
    proposal.places = group.places();
    proposal.files = group.files();
    const OrvDiffNormalizationPattern pattern(rule.expression.c_str(), rule.replacement.c_str());
    proposal.reach = reachOf(pattern, group.anchor, m_texts, m_variations.places, kSamples);
    const Variation& first = *group.members.front();
    for (const std::string& one : {first.valueA, first.valueB}) {
      const std::string text = group.anchor.left + one + group.anchor.right;
      const std::string after = applied(rule, text);
      if (after != text) {
        proposal.examples.emplace_back(text, after);
      }
    }
    proposal.stays = nearMiss(rule, value).value_or(first.valueA);
    m_found.patterns.push_back(std::move(proposal));
  }

  /// A text of the first run that has a value of this form elsewhere.
  std::optional<std::string> nearMiss(const Rule& rule, const std::string& value) {
    constexpr std::size_t kMostFiles = 20;
    constexpr std::size_t kMostTries = 50;
    const OrvDiffNormalizationPattern bare(value.c_str(), "");
    const OrvPatternList alone = {&bare};
    for (std::size_t file = 0; file < std::min(kMostFiles, m_texts.fileCount()); ++file) {
      const RunTexts::Text text = m_texts.of(file).front();
      const OrvOriginMap map(*text, alone);
      std::size_t tries = 0;
      for (const OrvOriginMap::Mask& mask : map.masks()) {
        if (++tries > kMostTries) {
          break;
        }
        const std::string sample = wholeWordsAround(*text, mask.begin, mask.end);
        if (applied(rule, sample) == sample) {
          return sample;
        }
      }
    }
    return std::nullopt;
  }

  /// The value with a word or two before it, on one line.
  static std::string wholeWordsAround(const std::string& text, std::size_t begin, std::size_t end) {
    constexpr std::size_t kMargin = 24;
    const std::string before = textBefore(text, begin, begin - std::min(begin, kMargin));
    const std::size_t cut = before.find_first_of(" >\n\"");
    std::string sample = before.substr(cut == std::string::npos ? 0 : cut + 1);
    sample += text.substr(begin, end - begin);
    for (const char c : textAfter(text, end, end + kMargin)) {
      const auto byte = static_cast<unsigned char>(c);
      if (byte <= ' ' || c == '<' || c == '"' || byte >= 0x7F) {
        break;
      }
      sample += c;
    }
    const std::size_t line = sample.find_last_of('\n');
    return line == std::string::npos ? sample : sample.substr(line + 1);
  }

  /// A pattern cannot sort, but it can turn one order of the same attributes into another.
  void proposeOrders() {
    constexpr std::size_t kMostOrders = 5;
    std::map<std::pair<std::string, std::string>, VariationGroup> orders;
    for (const Variation& variation : m_variations.all) {
      if (variation.kind == ValueKind::AttributeOrder) {
        VariationGroup& group = orders[attributesThatDiffer(variation)];
        group.kind = variation.kind;
        group.members.push_back(&variation);
      }
    }
    for (const auto& [texts, group] : orders) {
      const auto& [inA, inB] = texts;
      const Rule rule = {quotedExpression(inB), inA};
      if (orders.size() > kMostOrders || inA.find_first_of("$\\") != std::string::npos) {
        declineAll(group, "the same attributes in another order, which a pattern cannot sort");
        continue;
      }
      Proposal proposal;
      proposal.kind = group.kind;
      proposal.expression = rule.expression;
      proposal.replacement = rule.replacement;
      proposal.places = group.places();
      proposal.files = group.files();
      proposal.examples.emplace_back(inB, inA);
      proposal.stays = inA;
      const OrvDiffNormalizationPattern pattern(rule.expression.c_str(), rule.replacement.c_str());
      proposal.reach = reachOf(pattern, {}, m_texts, m_variations.places, kSamples);
      m_found.patterns.push_back(std::move(proposal));
    }
  }

  /// The part of the two tags from the first attribute that differs to the last.
  static std::pair<std::string, std::string> attributesThatDiffer(const Variation& variation) {
    const std::string& a = variation.valueA;
    const std::string& b = variation.valueB;
    const auto front = static_cast<std::size_t>(
        std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
    const std::size_t begin = a.rfind(' ', front) + 1;
    const auto back = static_cast<std::size_t>(
        std::mismatch(a.rbegin(), a.rend(), b.rbegin(), b.rend()).first - a.rbegin());
    const std::size_t end = a.find_first_of(" >/", a.size() - back);
    return {a.substr(begin, end - begin), b.substr(begin, b.size() - (a.size() - end) - begin)};
  }

  /// Blanks are not anchored: only other blanks can hide in them.
  void proposeBlanks() {
    const Rule rules[] = {
        {"[ \t]+\\n", "\n"}, {">[ \t\\n]+<", "><"}, {"\\n[ \t\\n]+", "\n"}, {"[ \t\\n]+", " "}};
    for (const Rule& rule : rules) {
      VariationGroup group;
      group.kind = ValueKind::WhiteSpace;
      for (const Variation& variation : m_variations.all) {
        if (variation.kind == ValueKind::WhiteSpace && m_blanks.count(&variation) == 0 &&
            makesEqual(rule, variation)) {
          m_blanks.insert(&variation);
          group.members.push_back(&variation);
        }
      }
      if (!group.members.empty()) {
        addBlanks(rule, group);
      }
    }
    for (const Variation& variation : m_variations.all) {
      if (variation.kind == ValueKind::WhiteSpace && m_blanks.count(&variation) == 0) {
        decline(variation, "blanks where the other run has none");
      }
    }
  }

  void addBlanks(const Rule& rule, const VariationGroup& group) {
    Proposal proposal;
    proposal.kind = group.kind;
    proposal.expression = rule.expression;
    proposal.replacement = rule.replacement;
    proposal.places = group.places();
    proposal.files = group.files();
    const Variation& first = *group.members.front();
    for (const std::string& value : {first.valueA, first.valueB}) {
      const std::string text = lastOf(first.before) + value + first.after.substr(0, 1);
      const std::string after = applied(rule, text);
      if (after != text && proposal.examples.empty()) {
        proposal.examples.emplace_back(text, after);
      }
    }
    proposal.stays = "1 x";
    const OrvDiffNormalizationPattern pattern(rule.expression.c_str(), rule.replacement.c_str());
    proposal.reach = reachOf(pattern, {}, m_texts, m_variations.places, kSamples);
    m_found.patterns.push_back(std::move(proposal));
  }

  static std::string lastOf(const std::string& text) {
    return text.empty() ? text : text.substr(text.size() - 1);
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
                     countOf(proposal.files, "file") + " of " +
                     std::to_string(m_texts.fileCount()) + " (found by orvdiff probe)";
    }
  }

  const Variations& m_variations;
  RunTexts& m_texts;
  std::set<const Variation*> m_blanks;  ///< that a pattern explains
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
    m_patterns.push_back(std::make_unique<OrvDiffNormalizationPattern>(
        proposal.expression.c_str(), proposal.replacement.c_str()));
    m_list.push_back(m_patterns.back().get());
  }
}
