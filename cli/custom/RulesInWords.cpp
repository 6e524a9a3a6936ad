#include "cli/custom/RulesInWords.h"

#include <array>
#include <charconv>

namespace {

using Sentences = std::vector<std::string>;

std::string written(double number) {
  std::array<char, 32> text = {};
  const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), number);
  return {text.data(), end};
}

void addTolerance(Sentences& sentences, const std::string& what, const Tolerance& tolerance) {
  constexpr double kPerCent = 100;
  if (tolerance.isNone()) {
    return;
  }
  std::string text = what + " may be off by ";
  if (tolerance.absolute > 0) {
    text += written(tolerance.absolute) + (tolerance.relative > 0 ? " or " : "");
  }
  if (tolerance.relative > 0) {
    text += written(kPerCent * tolerance.relative) + "% of the master's";
  }
  sentences.push_back(text);
}

struct Describer {
  Sentences operator()(const BytesRules& /*rules*/) const { return {}; }
  Sentences operator()(const TextRules& /*rules*/) const { return {}; }
  Sentences operator()(const XmlRules& /*rules*/) const { return {}; }

  Sentences operator()(const NumbersRules& rules) const {
    Sentences sentences = {"line ends do not count"};
    addTolerance(sentences, "numbers", rules.tolerance);
    return sentences;
  }

  Sentences operator()(const CsvRules& rules) const {
    Sentences sentences = {
        "quotes that are not needed, line ends and a byte-order mark do not count"};
    for (const std::string& name : rules.ignored) {
      sentences.push_back("column " + name + " is ignored");
    }
    std::string keys;
    for (const std::string& name : rules.keys) {
      keys += (keys.empty() ? "" : ", ") + name;
    }
    if (!keys.empty()) {
      sentences.push_back("rows may be in any order; they are told apart by " + keys);
    }
    for (const auto& [name, tolerance] : rules.ofColumn) {
      addTolerance(sentences, "numbers in column " + name, tolerance);
    }
    addTolerance(sentences, rules.ofColumn.empty() ? "numbers" : "numbers in other columns",
                 rules.tolerance);
    return sentences;
  }

  Sentences operator()(const JsonRules& rules) const {
    Sentences sentences = {
        "spacing, the order of members and the spelling of strings do not count"};
    for (const std::string& path : rules.ignored) {
      sentences.push_back("the value of " + path + " is ignored");
    }
    for (const std::string& path : rules.unordered) {
      sentences.push_back("elements of " + path + " may be in any order");
    }
    addTolerance(sentences, "numbers", rules.tolerance);
    return sentences;
  }

  Sentences operator()(const PictureRules& rules) const {
    Sentences sentences = {"only pixels count"};
    if (rules.share > 0) {
      sentences.push_back(written(rules.share) + "% of the pixels may differ");
    }
    if (rules.distance > 0) {
      sentences.push_back("pixels no more than " + written(rules.distance) +
                          " of 255 apart do not differ");
    }
    return sentences;
  }

  Sentences operator()(const ScriptRules& rules) const {
    std::string command;
    for (const std::string& argument : rules.command) {
      command += (command.empty() ? "" : " ") + argument;
    }
    return {"a script decides: " + command};
  }
};

}  // namespace

std::vector<std::string> rulesInWords(const OwnFormat& format) {
  return std::visit(Describer(), format.comparison);
}
