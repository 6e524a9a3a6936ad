#include "orvdiff/compare/OrvDiffFloatComparison.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <locale>
#include <sstream>
#include <system_error>
#include <utility>

#include "orvdiff/platform/VELAssert.h"

namespace {

// The digits of the classic locale, regardless of the host's locale.
bool isDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

bool isNumberStart(char byte) {
  return isDigit(byte) || byte == '+' || byte == '-' || byte == '.';
}

bool isNumberByte(char byte) {
  return isNumberStart(byte) || byte == 'e' || byte == 'E';
}

}  // namespace

struct OrvDiffFloatComparison::Side {
  explicit Side(const char* wholeText)
      : text(wholeText), end(text + std::strlen(text)), scan(text) {}

  const char* text;
  const char* end;
  const char* scan;    // everything before is compared
  bool found = false;  // the number at or after scan
  double value = 0;
};

OrvDiffFloatComparison::~OrvDiffFloatComparison() = default;

OrvDiffResult* OrvDiffFloatComparison::performStringDiff(const std::string& masterName,
                                                         const std::string& actualName,
                                                         char* master, char* actual) const {
  const std::optional<Mismatch> mismatch = findFirstMismatch(master, actual);
  if (!mismatch) {
    return velNew<OrvDiffResultPass>(VEL_HERE, masterName, actualName);
  }
  if (mismatch->master.found && mismatch->actual.found) {
    return velNew<OrvDiffResultFail>(VEL_HERE, masterName, actualName);
  }
  return velNew<OrvDiffResultFailDiff>(VEL_HERE, masterName, actualName);
}

std::optional<OrvDiffFloatComparison::Mismatch> OrvDiffFloatComparison::findFirstMismatch(
    const char* master, const char* actual) const {
  std::optional<Mismatch> closest;
  return findFirstMismatch(master, actual, closest);
}

std::optional<OrvDiffFloatComparison::Mismatch> OrvDiffFloatComparison::findFirstMismatch(
    const char* master, const char* actual, std::optional<Mismatch>& closest) const {
  VEL_ASSERT(master && actual);
  closest.reset();
  Side masterSide(master);
  Side actualSide(actual);
  double mostUsed = 0;  // of a tolerance
  std::pair<Side, Side> closestSides = {masterSide, actualSide};
  std::optional<Mismatch> mismatch;
  for (;;) {
    skipEqualText(masterSide, actualSide);
    const char* masterNext =
        findNextNumber(masterSide.scan, masterSide.end, masterSide.found, masterSide.value);
    const char* actualNext =
        findNextNumber(actualSide.scan, actualSide.end, actualSide.found, actualSide.value);
    if (!masterSide.found && !actualSide.found) break;
    if (masterSide.found != actualSide.found || !compare(masterSide.value, actualSide.value)) {
      mismatch = describe(masterSide, actualSide);
      break;
    }
    const double used = usedTolerance(masterSide.value, actualSide.value);
    if (used > mostUsed) {
      mostUsed = used;
      closestSides = {masterSide, actualSide};
    }
    masterSide.scan = masterNext;
    actualSide.scan = actualNext;
  }
  if (mostUsed > 0) {
    closest = describe(closestSides.first, closestSides.second);
  }
  return mismatch;
}

// Moves both sides past equal text, up to a byte that cannot be part of a number: all numbers
// before it are equal pairs. Looks at one block at a time, so that a long text without such a byte
// costs at most one block per number.
void OrvDiffFloatComparison::skipEqualText(Side& master, Side& actual) {
  constexpr std::ptrdiff_t kBlock = 64;
  while (master.end - master.scan >= kBlock && actual.end - actual.scan >= kBlock &&
         std::memcmp(master.scan, actual.scan, kBlock) == 0) {
    std::ptrdiff_t safe = kBlock;
    while (safe > 0 && isNumberByte(master.scan[safe - 1])) --safe;
    if (safe == 0) return;
    master.scan += safe;
    actual.scan += safe;
  }
}

OrvDiffFloatComparison::Mismatch OrvDiffFloatComparison::describe(const Side& master,
                                                                  const Side& actual) const {
  const bool isPair = master.found && actual.found;
  return {locate(master), locate(actual), isPair ? std::fabs(master.value - actual.value) : 0,
          isPair && my_finite(master.value) ? getTolerance(master.value) : 0};
}

OrvDiffFloatComparison::Number OrvDiffFloatComparison::locate(const Side& side) const {
  const char* start = nullptr;
  const char* end = nullptr;
  if (!findNumber(side.scan, start, end)) {
    start = end = side.end;
  }
  const char* lineStart = start;
  while (lineStart != side.text && lineStart[-1] != '\n') --lineStart;
  const auto linesBefore = static_cast<std::size_t>(std::count(side.text, lineStart, '\n'));
  const auto bytesBefore = static_cast<std::size_t>(start - lineStart);
  return {side.found, side.found ? side.value : 0, start, end, linesBefore + 1, bytesBefore + 1};
}

OrvDiffFloatComparison::ParserResults OrvDiffFloatComparison::parseSign(const char* text) const {
  VEL_ASSERT(text);
  const bool ok = *text == '+' || *text == '-';
  return {text + (ok ? 1 : 0), ok};
}

OrvDiffFloatComparison::ParserResults OrvDiffFloatComparison::parseDecimal(const char* text) const {
  VEL_ASSERT(text);
  const bool ok = *text == '.';
  return {text + (ok ? 1 : 0), ok};
}

OrvDiffFloatComparison::ParserResults OrvDiffFloatComparison::parseDigits(const char* text) const {
  VEL_ASSERT(text);
  const char* end = text;
  while (isDigit(*end)) ++end;
  return {end, end != text};
}

OrvDiffFloatComparison::ParserResults OrvDiffFloatComparison::parseMantissa(
    const char* text) const {
  VEL_ASSERT(text);
  const ParserResults integer = parseDigits(parseSign(text).end);
  const ParserResults fraction = parseDigits(parseDecimal(integer.end).end);
  const bool ok = integer.ok || fraction.ok;
  return {ok ? fraction.end : text, ok};
}

// If no digit follows, the end is still after the letter and the sign: parseNumber counts a
// dangling exponent as part of the number.
OrvDiffFloatComparison::ParserResults OrvDiffFloatComparison::parseExponent(
    const char* text) const {
  VEL_ASSERT(text);
  if (*text != 'e' && *text != 'E') return {text, false};
  return parseDigits(parseSign(text + 1).end);
}

OrvDiffFloatComparison::ParserResults OrvDiffFloatComparison::parseNumber(const char* text) const {
  VEL_ASSERT(text);
  const ParserResults mantissa = parseMantissa(text);
  if (!mantissa.ok) return mantissa;
  return {parseExponent(mantissa.end).end, true};
}

double OrvDiffFloatComparison::extractNumber(const char* start, const char* end) const {
  VEL_ASSERT(start);
  VEL_ASSERT(end);
  double value = 0;
  if (std::locale() == std::locale::classic()) {
    const char* first = start + (*start == '+' ? 1 : 0);  // from_chars takes no plus sign
    if (std::from_chars(first, end, value).ec == std::errc()) return value;
  }
  // A dangling exponent would make the extraction fail as a whole.
  while (!isDigit(end[-1]) && end[-1] != '.') --end;
  std::istringstream stream(std::string(start, end));
  stream >> value;
  const bool tooLarge = stream.fail() && std::fabs(value) == std::numeric_limits<double>::max();
  return tooLarge ? std::copysign(my_infinity(), value) : value;
}

bool OrvDiffFloatComparison::findNumber(const char* begin, const char* end,
                                        const char*& numberStart, const char*& numberEnd) const {
  for (const char* at = begin; at != end; ++at) {
    if (!isNumberStart(*at)) continue;
    const ParserResults number = parseNumber(at);
    if (number.ok) {
      numberStart = at;
      numberEnd = number.end;
      return true;
    }
  }
  numberStart = nullptr;
  numberEnd = nullptr;
  return false;
}

bool OrvDiffFloatComparison::findNumber(const char* text, const char*& numberStart,
                                        const char*& numberEnd) const {
  VEL_ASSERT(text);
  return findNumber(text, text + std::strlen(text), numberStart, numberEnd);
}

const char* OrvDiffFloatComparison::findNextNumber(const char* begin, const char* end, bool& found,
                                                   double& value) const {
  const char* numberStart = nullptr;
  const char* numberEnd = nullptr;
  found = findNumber(begin, end, numberStart, numberEnd);
  if (!found) return end;
  value = extractNumber(numberStart, numberEnd);
  return numberEnd;
}

bool OrvDiffFloatComparison::compare(double master, double actual) const {
  if (my_isnan(master) || my_isnan(actual)) return false;
  if (master == actual) return true;
  if (!my_finite(master)) return false;
  return getTolerance(master) >= std::fabs(master - actual);
}

// How much of the tolerance two numbers use that match; 1 is all of it.
double OrvDiffFloatComparison::usedTolerance(double master, double actual) const {
  return master == actual ? 0 : std::fabs(master - actual) / getTolerance(master);
}

double OrvDiffFloatComparison::getTolerance(double master) const {
  return std::pow(10.0, getExponent(master) - 14);
}

int OrvDiffFloatComparison::getExponent(double f) const {
  VEL_ASSERT(my_finite(f));
  if (f == 0) return 0;
  return static_cast<int>(std::floor(std::log10(std::fabs(f))));
}

bool OrvDiffFloatComparison::my_isnan(double value) {
  return std::isnan(value);
}

bool OrvDiffFloatComparison::my_finite(double value) {
  return std::isfinite(value);
}

double OrvDiffFloatComparison::my_infinity() {
  return std::numeric_limits<double>::infinity();
}
