#include "cli/probe/ValueKind.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "orvdiff/compare/OrvOriginMap.h"

namespace {

struct KindTraits {
  ValueKind kind;
  std::string_view name;
  std::string_view slug;
  bool isVolatileByForm;
};

constexpr KindTraits kTraits[] = {
    {ValueKind::DateTime, "date and time", "date-time", true},
    {ValueKind::Date, "date", "date", true},
    {ValueKind::Time, "time", "time", true},
    {ValueKind::Duration, "duration", "duration", false},
    {ValueKind::Uuid, "UUID", "uuid", true},
    {ValueKind::HexId, "hexadecimal id", "hex-id", true},
    {ValueKind::HostName, "host name", "host", true},
    {ValueKind::Version, "version", "version", true},
    {ValueKind::Year, "year", "year", false},
    {ValueKind::Counter, "counter", "number", false},
    {ValueKind::Number, "number", "number", false},
    {ValueKind::Identifier, "identifier", "id", false},
    {ValueKind::AttributeOrder, "order of attributes", "attributes", true},
    {ValueKind::WhiteSpace, "white space", "blanks", true},
    {ValueKind::Words, "words", "words", false},
};

const KindTraits& traitsOf(ValueKind kind) {
  return *std::find_if(std::begin(kTraits), std::end(kTraits),
                       [kind](const KindTraits& traits) { return traits.kind == kind; });
}

/// Takes the place of what was found, so that no later form is found across it.
constexpr const char* kFound = "\x01";

const std::string kDigits2 = "[0-9][0-9]";
const std::string kDigits4 = kDigits2 + kDigits2;
const std::string kDay = "[0-9][0-9]?";
const std::string kMonth = "(Jan|Feb|Mar|Apr|May|Jun|Jul|Aug|Sep|Oct|Nov|Dec)[a-z]*";
const std::string kWeekday = "((Mon|Tue|Wed|Thu|Fri|Sat|Sun)[a-z]*,? +)?";

std::string hex(int digits) {
  std::string expression;
  for (int i = 0; i < digits; ++i) {
    expression += "[0-9A-Fa-f]";
  }
  return expression;
}

/// The forms, most special first: what one has found the others do not see.
struct Form {
  ValueKind kind;
  std::string expression;
};

std::vector<Form> knownForms() {
  const std::string part = "[0-9A-Za-z]+";
  return {
      {ValueKind::Uuid,
       "\\b" + hex(8) + '-' + hex(4) + '-' + hex(4) + '-' + hex(4) + '-' + hex(12) + "\\b"},
      {ValueKind::HostName, "//[0-9A-Za-z.-]+(:[0-9]+)?"},
      {ValueKind::Date, "\\b" + kDigits4 + "[./-]" + kDigits2 + "[./-]" + kDigits2},
      {ValueKind::Date, "\\b" + kDay + "[./-]" + kDay + "[./-]" + kDigits4 + "\\b"},
      {ValueKind::Date,
       "\\b" + kWeekday + kMonth + "[.]? +" + kDay + "(st|nd|rd|th)?,? +" + kDigits4 + "\\b"},
      {ValueKind::Date,
       "\\b" + kWeekday + kDay + "[.]?[ -]+" + kMonth + "[.]?,?[ -]" + kDigits4 + "\\b"},
      {ValueKind::Date, "\\b" + kWeekday + kMonth + " +" + kDay + "\\b"},
      {ValueKind::Date, "\\b" + kMonth + " " + kDigits4 + "\\b"},
      {ValueKind::Time, kDay + ":" + kDigits2 + "(:" + kDigits2 +
                            ")?([.,][0-9]+)?( ?[AaPp][Mm]\\b)?"
                            "( ?(UTC|GMT|Z|CEST|CET|EST|EDT|PST|PDT)\\b| ?[+-]" +
                            kDigits2 + ":?" + kDigits2 + ")?"},
      {ValueKind::Duration,
       "\\b[0-9]+([.][0-9]+)? ?(ms|us|ns|seconds|second|secs|sec|s|minutes|minute|min)\\b"},
      {ValueKind::Version, "\\b[vV]?[0-9]+[.][0-9]+[.][0-9]+(\\." + part + "|-" + part + "|\\+" +
                               part + "|~" + part + ")*"},
      {ValueKind::Version, "\\b[vV][0-9]+[.][0-9]+\\b"},
      {ValueKind::HostName, "\\b[A-Za-z][0-9A-Za-z-]*[.][0-9A-Za-z-]+[.][A-Za-z][A-Za-z]+\\b"},
      {ValueKind::HexId, "\\b0x[0-9A-Fa-f]+\\b"},
      {ValueKind::HexId, "\\b" + hex(8) + "[0-9A-Fa-f]*\\b"},
      {ValueKind::Number, "\\b[0-9]+(\\.[0-9]+|,[0-9]+)*\\b"},
  };
}

/// Whether what looks like the name of a host is that of a file: "m1.c.html".
bool isFileName(std::string_view text) {
  constexpr std::string_view kEndings[] = {"html", "htm", "xml", "js",   "css", "png", "gif", "jpg",
                                           "svg",  "pdf", "csv", "json", "txt", "php", "xlsx"};
  const std::string_view ending = text.substr(text.rfind('.') + 1);
  return text.substr(0, 2) != "//" &&
         std::find(std::begin(kEndings), std::end(kEndings), ending) != std::end(kEndings);
}

/// A pattern list whose masks tell which form stands where.
class FormSearch {
 public:
  FormSearch() {
    for (const Form& form : knownForms()) {
      auto pattern = std::make_unique<OrvDiffNormalizationPattern>(form.expression.c_str(), kFound);
      pattern->setName(std::string(nameOf(form.kind)));  // else each map looks it up
      m_kinds.push_back(form.kind);
      m_list.push_back(pattern.get());
      m_patterns.push_back(std::move(pattern));
    }
  }

  std::vector<FoundValue> find(std::string_view text) const {
    const OrvOriginMap map(text, m_list);
    std::vector<FoundValue> found;
    for (const OrvOriginMap::Mask& mask : map.masks()) {
      if (mask.rule == 0) {
        continue;  // carriage returns
      }
      const ValueKind kind = m_kinds[mask.rule - 1];
      if (kind != ValueKind::HostName ||
          !isFileName(text.substr(mask.begin, mask.end - mask.begin))) {
        found.push_back({mask.begin, mask.end, kind});
      }
    }
    return found;
  }

 private:
  std::vector<ValueKind> m_kinds;
  std::vector<std::unique_ptr<OrvDiffNormalizationPattern>> m_patterns;
  OrvPatternList m_list;
};

bool isOfCalendar(ValueKind kind) {
  return kind == ValueKind::DateTime || kind == ValueKind::Date || kind == ValueKind::Time;
}

bool isYear(std::string_view text) {
  return text.size() == 4 && (text.substr(0, 2) == "19" || text.substr(0, 2) == "20");
}

/// Whether two values with `gap` between them are the date and the time of one moment, or, as
/// `date` prints it, the year behind them.
bool belongTogether(ValueKind first, ValueKind second, std::string_view secondText,
                    std::string_view gap) {
  const bool isShort =
      gap.size() <= 3 && gap.find_first_not_of(" ,T@/-|") == std::string_view::npos;
  if (!isOfCalendar(first) || !(isShort || gap == " at " || gap == " um ")) {
    return false;
  }
  return isOfCalendar(second) ? first != second
                              : second == ValueKind::Number && isYear(secondText) && gap == " ";
}

bool areAll(std::string_view text, const char* members) {
  return !text.empty() && text.find_first_not_of(members) == std::string_view::npos;
}

constexpr const char* kBlanks = " \t\n";
constexpr const char* kDigits = "0123456789";
constexpr const char* kHexDigits = "0123456789abcdefABCDEFx";
constexpr const char* kIdCharacters =
    "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ_-.&=:+/";

/// The kind of a text that is one value from its first byte to its last, else `Words`.
ValueKind formOf(const std::string& text) {
  const std::vector<FoundValue> found = findValues(text);
  const bool isWhole = found.size() == 1 && found[0].begin == 0 && found[0].end == text.size();
  return isWhole ? found[0].kind : ValueKind::Words;
}

/// The kind of values of different or of no known form.
ValueKind looseKindOf(const std::vector<std::string>& values) {
  constexpr std::size_t kShortestHexId = 6;
  const auto all = [&](auto condition) {
    return std::all_of(values.begin(), values.end(), condition);
  };
  if (all([](const std::string& value) { return areAll(value, kDigits); })) {
    return all(isYear) ? ValueKind::Year : ValueKind::Counter;
  }
  const auto hasDigit = [](const std::string& value) {
    return value.find_first_of(kDigits) != std::string::npos;
  };
  if (std::any_of(values.begin(), values.end(), hasDigit) && all([](const std::string& value) {
        return areAll(value, kHexDigits) && value.size() >= kShortestHexId;
      })) {
    return ValueKind::HexId;
  }
  const bool areIds = all(
      [&](const std::string& value) { return areAll(value, kIdCharacters) && hasDigit(value); });
  return areIds ? ValueKind::Identifier : ValueKind::Words;
}

}  // namespace

std::string_view nameOf(ValueKind kind) {
  return traitsOf(kind).name;
}

std::string_view slugOf(ValueKind kind) {
  return traitsOf(kind).slug;
}

bool isVolatileByForm(ValueKind kind) {
  return traitsOf(kind).isVolatileByForm;
}

bool isCalendarWord(std::string_view word) {
  constexpr std::array<std::string_view, 21> kStarts = {
      "jan", "feb", "mar", "apr", "may", "jun", "jul", "aug", "sep", "oct", "nov",
      "dec", "mon", "tue", "wed", "thu", "fri", "sat", "sun", "am",  "pm"};
  std::string start(word.substr(0, 3));
  std::transform(start.begin(), start.end(), start.begin(),
                 [](char c) { return static_cast<char>(c >= 'A' && c <= 'Z' ? c | 0x20 : c); });
  return std::find(kStarts.begin(), kStarts.end(), start) != kStarts.end();
}

std::vector<FoundValue> findValues(std::string_view text) {
  static const FormSearch search;
  std::vector<FoundValue> joined;
  for (const FoundValue& value : search.find(text)) {
    if (!joined.empty()) {
      FoundValue& last = joined.back();
      if (belongTogether(last.kind, value.kind, text.substr(value.begin, value.end - value.begin),
                         text.substr(last.end, value.begin - last.end))) {
        last.end = value.end;
        last.kind = last.kind == ValueKind::Date && !isOfCalendar(value.kind) ? ValueKind::Date
                                                                              : ValueKind::DateTime;
        continue;
      }
    }
    joined.push_back(value);
  }
  return joined;
}

ValueKind kindOf(const std::vector<std::string>& values) {
  if (std::all_of(values.begin(), values.end(), [](const std::string& value) {
        return value.find_first_not_of(kBlanks) == std::string::npos;
      })) {
    return ValueKind::WhiteSpace;
  }
  const ValueKind kind = formOf(values.front());
  const bool isCommon =
      std::all_of(values.begin() + 1, values.end(),
                  [kind](const std::string& value) { return formOf(value) == kind; });
  if (!isCommon || kind == ValueKind::Words || kind == ValueKind::HexId) {
    return looseKindOf(values);
  }
  // "4711" is a number as well.
  const ValueKind loose = looseKindOf(values);
  const bool isWhole = loose == ValueKind::Counter || loose == ValueKind::Year;
  return kind == ValueKind::Number && isWhole ? loose : kind;
}
