#include "orvdiff/compare/VmdStatistics.h"

#include <cstdlib>
#include <string_view>

namespace {

constexpr std::string_view kMappingMode = "Mapping Mode - ";
constexpr std::string_view kVirtualObjects =
    "Mapping Statistics - Virtual Objects (Current/Max/Cumulative): ";
constexpr std::string_view kPaging = "Paging Statistics";
constexpr std::string_view kPageOuts = "Page Outs: ";
constexpr std::string_view kReferencedObjects = "Total Objects with reference count > 0 : ";

bool startsWith(std::string_view line, std::string_view prefix) {
  return line.substr(0, prefix.size()) == prefix;
}

/// Reads as "%u" does: accepts blanks and a sign; without a digit, leaves `value` unchanged.
void readUnsigned(const char* text, std::uint32_t& value) {
  char* end = nullptr;
  const unsigned long read = std::strtoul(text, &end, 10);
  if (end != text) {
    value = static_cast<std::uint32_t>(read);
  }
}

/// Reads the number that follows the `length` characters at `position`; false if `position` is that
/// of a search that found nothing.
bool readAfter(std::string_view line, std::size_t position, std::size_t length,
               std::uint32_t& value) {
  if (position == std::string_view::npos) {
    return false;
  }
  readUnsigned(line.data() + position + length, value);
  return true;
}

bool readVirtualObjects(std::string_view line, std::uint32_t& value) {
  const std::size_t first = line.find('/', kVirtualObjects.size());
  return startsWith(line, kVirtualObjects) && first != std::string_view::npos &&
         readAfter(line, line.find('/', first + 1), 1, value);
}

/// `line` has no line feed; `isWhole` says whether one followed it.
bool parseLine(OrvVmdStatistics& statistics, int number, std::string_view line, bool isWhole) {
  switch (number) {
    case 0:
    case 1:
    case 3:
      return true;
    case 2:
      if (!startsWith(line, kMappingMode) || !isWhole) {
        return false;
      }
      statistics.mappingMode = line.substr(kMappingMode.size());
      return true;
    case 4:
      return isWhole && readVirtualObjects(line, statistics.virtualObjectsCumulative);
    case 5:
      return isWhole && startsWith(line, kPaging) &&
             readAfter(line, line.find(kPageOuts), kPageOuts.size(), statistics.pageOuts);
    default:
      return !startsWith(line, kReferencedObjects) ||
             (isWhole &&
              readAfter(line, 0, kReferencedObjects.size(), statistics.referencedObjects));
  }
}

/// `master` - `actual` may wrap around; read as a signed number, it is still the difference.
bool isWithin(std::uint32_t master, std::uint32_t actual, std::int32_t allowance) {
  const auto difference = static_cast<std::int32_t>(master - actual);
  return difference >= -allowance && difference <= allowance;
}

}  // namespace

bool OrvVmdStatistics::parse(const char* text) {
  std::string_view rest(text != nullptr ? text : "");
  malformedLine = 0;
  for (int number = 0; !rest.empty(); ++number) {
    const std::size_t end = rest.find('\n');
    const bool isWhole = end != std::string_view::npos;
    if (!parseLine(*this, number, rest.substr(0, end), isWhole)) {
      malformedLine = static_cast<std::size_t>(number) + 1;
      return false;
    }
    rest.remove_prefix(isWhole ? end + 1 : rest.size());
  }
  return true;
}

bool areWithinAllowances(const OrvVmdStatistics& master, const OrvVmdStatistics& actual) {
  return master.mappingMode == actual.mappingMode &&
         isWithin(master.virtualObjectsCumulative, actual.virtualObjectsCumulative,
                  kVmdVirtualObjectsAllowance) &&
         isWithin(master.pageOuts, actual.pageOuts, kVmdPageOutsAllowance) &&
         master.referencedObjects == actual.referencedObjects;
}
