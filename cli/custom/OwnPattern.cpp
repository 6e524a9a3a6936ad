#include "cli/custom/OwnPattern.h"

#include <unicode/uregex.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <array>
#include <exception>

#include "cli/terminal/ErrorCause.h"
#include "cli/terminal/Excerpt.h"
#include "orvdiff/compare/OrvDiffLib.h"

namespace {

constexpr int kStepLimit = 20'000;

struct CloseExpression {
  void operator()(URegularExpression* expression) const { uregex_close(expression); }
};
using Expression = std::unique_ptr<URegularExpression, CloseExpression>;

std::string utf8(const UChar* text) {
  constexpr int kMost = 4 * U_PARSE_CONTEXT_LEN;
  std::array<char, kMost> bytes = {};
  int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strToUTF8WithSub(bytes.data(), kMost, &length, text, -1, 0xFFFD, nullptr, &status);
  return U_SUCCESS(status) ? std::string(bytes.data(), static_cast<std::size_t>(length)) : "";
}

/// What ICU says, and where in the expression.
std::string refusal(UErrorCode status, const UParseError& error) {
  std::string text = std::string("ICU refuses the expression (") + u_errorName(status) + ')';
  if (error.offset >= 0) {
    text += " at character " + std::to_string(error.offset + 1);
    const std::string before = utf8(error.preContext);
    const std::string after = utf8(error.postContext);
    if (!(before + after).empty()) {
      text += ", between \"" + before + "\" and \"" + after + '"';
    }
  }
  return text;
}

std::u16string utf16(const std::string& text) {
  std::u16string units(text.size(), u'\0');  // never more units than bytes
  int32_t length = 0;
  UErrorCode status = U_ZERO_ERROR;
  u_strFromUTF8WithSub(units.data(), static_cast<int32_t>(units.size()), &length, text.data(),
                       static_cast<int32_t>(text.size()), 0xFFFD, nullptr, &status);
  units.resize(static_cast<std::size_t>(length));
  return units;
}

bool hasEmptyMatch(URegularExpression* expression, const std::string& text) {
  const std::u16string units = utf16(text);
  UErrorCode status = U_ZERO_ERROR;
  uregex_setText(expression, units.data(), static_cast<int32_t>(units.size()), &status);
  while (uregex_findNext(expression, &status) != 0) {
    if (uregex_start(expression, 0, &status) == uregex_end(expression, 0, &status)) {
      return true;
    }
  }
  return false;
}

std::string withoutReturns(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '\r'), text.end());
  return text;
}

std::string quoted(const std::string& text) {
  constexpr std::size_t kColumns = 60;
  return '"' + shortened(text, kColumns) + '"';
}

}  // namespace

std::string compileOwnPattern(OwnPattern& pattern) {
  if (pattern.expression.find('\0') != std::string::npos ||
      pattern.replacement.find('\0') != std::string::npos) {
    return "expression and replacement cannot hold a NUL character";
  }
  UParseError error = {0, -1, {}, {}};
  UErrorCode status = U_ZERO_ERROR;
  const Expression tried(uregex_openC(pattern.expression.c_str(), 0, &error, &status));
  if (U_FAILURE(status)) {
    return refusal(status, error);
  }
  auto compiled = std::make_shared<OrvDiffNormalizationPattern>(pattern.expression.c_str(),
                                                                pattern.replacement.c_str());
  compiled->setName(pattern.name);
  compiled->setStepLimit(kStepLimit);
  pattern.pattern = std::move(compiled);
  return {};
}

std::string applyOwnPattern(const OwnPattern& pattern, const std::string& text) {
  OrvTextBuffer buffer = OrvDiffLib::strdupnew(text.c_str());
  OrvTextBuffer unused = OrvDiffLib::strdupnew("");  // cleanse works on pairs
  OrvDiffLib::cleanse(buffer, unused, {pattern.pattern.get()});
  return buffer.get();
}

std::string exampleProblem(const OwnPattern& pattern, const OwnPattern::Example& example) {
  try {
    const std::string result = applyOwnPattern(pattern, example.before);
    if (result == withoutReturns(example.after)) {
      return {};
    }
    const std::string given = quoted(example.before);
    return example.before == example.after ? given + " should stay, but becomes " + quoted(result)
           : result == withoutReturns(example.before)
               ? given + " should become " + quoted(example.after) + ", but stays"
               : given + " should become " + quoted(example.after) + ", but becomes " +
                     quoted(result);
  } catch (const std::exception& error) {
    return quoted(example.before) + " cannot be normalised: " + causeOf(error, Verbosity::Normal);
  }
}

bool matchesEmptyText(const OwnPattern& pattern) {
  UErrorCode status = U_ZERO_ERROR;
  const Expression expression(uregex_openC(pattern.expression.c_str(), 0, nullptr, &status));
  uregex_setTimeLimit(expression.get(), kStepLimit, &status);
  return hasEmptyMatch(expression.get(), "") ||
         std::any_of(pattern.examples.begin(), pattern.examples.end(), [&](const auto& example) {
           return hasEmptyMatch(expression.get(), example.before);
         });
}
