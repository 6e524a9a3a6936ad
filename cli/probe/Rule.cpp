#include "cli/probe/Rule.h"

#include "cli/probe/RunTexts.h"

std::unique_ptr<OrvDiffNormalizationPattern> compiled(const Rule& rule) {
  return std::make_unique<OrvDiffNormalizationPattern>(rule.expression.c_str(),
                                                       rule.replacement.c_str());
}

std::string applied(const Rule& rule, const std::string& text) {
  const auto pattern = compiled(rule);
  return normalized(text, {pattern.get()});
}

bool makesEqual(const Rule& rule, const Variation& variation) {
  return applied(rule, variation.before + variation.valueA + variation.after) ==
         applied(rule, variation.before + variation.valueB + variation.after);
}

bool isUsable(char c) {
  return c == '\n' || (c >= ' ' && c < 0x7F && c != '$' && c != '\\');
}
