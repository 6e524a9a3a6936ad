#include <algorithm>
#include <array>
#include <cmath>
#include <set>

#include "cli/custom/CsvColumns.h"
#include "cli/custom/FormatList.h"
#include "cli/custom/JsonPaths.h"

namespace {

constexpr std::array<std::string_view, std::variant_size_v<OwnComparison>> kComparisons = {
    "byte identity",    "normalised text",       "well-formed or valid XML, then text",
    "numbers and text", "cells of a table",      "JSON values",
    "pixels",           "a script of the suite",
};

bool isUsableName(const std::string& name) {
  return !name.empty() && name.front() != '-' && std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-';
  });
}

/// A folder below another one, which names cannot leave.
bool isPlainFolder(const std::string& folder) {
  const std::string slashed = '/' + folder + '/';
  return slashed.find("//") == std::string::npos && slashed.find("/../") == std::string::npos &&
         slashed.find("/./") == std::string::npos && folder.find('*') == std::string::npos;
}

bool isUsable(double number) {
  return std::isfinite(number) && number >= 0;
}

bool isUsable(const Tolerance& tolerance) {
  return isUsable(tolerance.absolute) && isUsable(tolerance.relative);
}

constexpr const char* kBadTolerance = "has a tolerance that is negative or no number";

/// Looks for what is wrong with the rules of each kind.
struct RulesCheck {
  std::string operator()(const BytesRules& /*rules*/) const { return {}; }
  std::string operator()(const TextRules& /*rules*/) const { return {}; }

  std::string operator()(const XmlRules& rules) const {
    return rules.schema.empty() && !rules.namespaceUri.empty() ? "has a namespace, but no schema"
                                                               : "";
  }

  std::string operator()(const NumbersRules& rules) const {
    return isUsable(rules.tolerance) ? "" : kBadTolerance;
  }

  std::string operator()(const CsvRules& rules) const {
    if (rules.separator == '"' || rules.separator == '\n' || rules.separator == '\r') {
      return "has a separator that cannot separate cells";
    }
    if (!rules.hasHeader && CsvColumns::needHeader(rules)) {
      return "names columns, but has no header";
    }
    std::set<std::string> named;
    for (const auto* const names : {&rules.ignored, &rules.keys}) {
      for (const std::string& name : *names) {
        if (!named.insert(name).second) {
          return "names column \"" + name + "\" twice among ignored columns and keys";
        }
      }
    }
    for (const auto& [name, tolerance] : rules.ofColumn) {
      if (!named.insert(name).second) {
        return "has a tolerance for column \"" + name + "\", which is ignored or a key";
      }
      if (!isUsable(tolerance)) {
        return kBadTolerance;
      }
    }
    return isUsable(rules.tolerance) ? "" : kBadTolerance;
  }

  std::string operator()(const JsonRules& rules) const {
    for (const auto* const paths : {&rules.ignored, &rules.unordered}) {
      for (const std::string& text : *paths) {
        const auto path = JsonPath::parse(text);
        if (!path) {
          return "has \"" + text + "\", which is no path such as $.rows[*].id";
        }
        if (path->steps.empty() && paths == &rules.ignored) {
          return "ignores all of the file";
        }
      }
    }
    return isUsable(rules.tolerance) ? "" : kBadTolerance;
  }

  std::string operator()(const PictureRules& rules) const {
    constexpr double kAll = 100;
    constexpr double kLargestDistance = 255;
    if (!isUsable(rules.share) || rules.share >= kAll) {
      return "has a share of pixels that is not from 0 to less than 100 per cent";
    }
    return isUsable(rules.distance) && rules.distance < kLargestDistance
               ? ""
               : "has a distance of pixels that is not from 0 to less than 255";
  }

  std::string operator()(const ScriptRules& rules) const {
    if (rules.command.empty() || rules.command.front().empty()) {
      return "has no program";
    }
    for (const char* const placeholder : {"{master}", "{output}"}) {
      if (std::none_of(rules.command.begin() + 1, rules.command.end(),
                       [placeholder](const std::string& argument) {
                         return argument.find(placeholder) != std::string::npos;
                       })) {
        return std::string("has no argument with ") + placeholder;
      }
    }
    if (std::any_of(rules.passes.begin(), rules.passes.end(), [&rules](int status) {
          return std::find(rules.differs.begin(), rules.differs.end(), status) !=
                 rules.differs.end();
        })) {
      return "has an exit status that both passes and differs";
    }
    return std::isfinite(rules.seconds) && rules.seconds > 0 ? "" : "has no time to run";
  }
};

}  // namespace

std::string problemOf(const OwnFormat& format) {
  if (!isUsableName(format.name)) {
    return "must be of lower-case letters, digits and hyphens, and not start with a hyphen";
  }
  if (format.outputFolder.empty() || !isPlainFolder(format.outputFolder)) {
    return "has no plain name of its output folder";
  }
  if (!format.masterFolder.empty() && !isPlainFolder(format.masterFolder)) {
    return "has no plain name of its master folder";
  }
  if (format.masterTail.empty() || format.masterTail.find('/') != std::string::npos) {
    return "does not say how the names of its masters end, such as \"*.csv\"";
  }
  return std::visit(RulesCheck(), format.comparison);
}

std::string_view comparisonOf(const OwnFormat& format) {
  return kComparisons[format.comparison.index()];
}
