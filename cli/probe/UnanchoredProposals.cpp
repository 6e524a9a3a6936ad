#include "cli/probe/UnanchoredProposals.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "cli/probe/ValueExpression.h"

namespace {

/// The part of two tags from the first attribute that differs to the last.
std::pair<std::string, std::string> movedAttributes(const Variation& variation) {
  const std::string& a = variation.valueA;
  const std::string& b = variation.valueB;
  const auto front = static_cast<std::size_t>(
      std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
  const std::size_t begin = a.rfind(' ', front) + 1;
  const auto back = static_cast<std::size_t>(
      std::mismatch(a.rbegin(), a.rend(), b.rbegin(), b.rend()).first - a.rbegin());
  const std::size_t end = std::min(a.size() - 1, a.find_first_of(" >/", a.size() - back));
  const std::size_t endB = b.size() - (a.size() - end);
  return {a.substr(begin, end - begin), b.substr(begin, endB - begin)};
}

}  // namespace

std::vector<UnanchoredRule> orderRules(const std::vector<Variation>& variations) {
  constexpr std::size_t kMostOrders = 5;
  std::map<std::pair<std::string, std::string>, VariationGroup> orders;
  for (const Variation& variation : variations) {
    if (variation.kind == ValueKind::AttributeOrder) {
      VariationGroup& group = orders[movedAttributes(variation)];
      group.kind = variation.kind;
      group.members.push_back(&variation);
    }
  }
  std::vector<UnanchoredRule> rules;
  for (auto& [texts, group] : orders) {
    const auto& [inA, inB] = texts;
    const std::string both = inA + inB;
    // Tags that differ in their blanks as well are not worth the trouble.
    if (orders.size() <= kMostOrders && inA.size() == inB.size() && !inA.empty() &&
        std::all_of(both.begin(), both.end(), isUsable)) {
      rules.push_back({{quotedExpression(inB), inA}, std::move(group), inB});
    }
  }
  return rules;
}

std::vector<UnanchoredRule> blankRules(const std::vector<Variation>& variations) {
  const Rule candidates[] = {
      {"[ \t]+\\n", "\n"}, {">[ \t\\n]+<", "><"}, {"\\n[ \t\\n]+", "\n"}, {"[ \t\\n]+", " "}};
  std::vector<UnanchoredRule> rules;
  std::set<const Variation*> explained;
  for (const Rule& rule : candidates) {
    VariationGroup group;
    group.kind = ValueKind::WhiteSpace;
    for (const Variation& variation : variations) {
      if (variation.kind == ValueKind::WhiteSpace && explained.count(&variation) == 0 &&
          makesEqual(rule, variation)) {
        explained.insert(&variation);
        group.members.push_back(&variation);
      }
    }
    if (!group.members.empty()) {
      const Variation& first = *group.members.front();
      const bool isOfTags = rule.replacement == "><";
      std::string example = (isOfTags ? ">" : "x") + first.valueA + (isOfTags ? "<" : "x");
      if (applied(rule, example) == example) {
        example.replace(1, first.valueA.size(), first.valueB);
      }
      rules.push_back({rule, std::move(group), std::move(example)});
    }
  }
  return rules;
}
