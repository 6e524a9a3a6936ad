#include "cli/content/Tolerance.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <optional>
#include <system_error>

#include "cli/content/Decimal.h"

namespace {

/// Reads the usual spellings, which need no `Decimal`.
std::optional<double> readPlain(std::string_view text) {
  const std::size_t sign = !text.empty() && text.front() == '-' ? 1 : 0;
  if (text.size() <= sign || text[sign] < '0' || text[sign] > '9' ||
      text.size() > Decimal::kLongestText) {
    return std::nullopt;
  }
  double value = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

/// What calculating with doubles says; nothing where rounding could decide.
std::optional<bool> allowsNearly(const Tolerance& tolerance, double master, double output) {
  constexpr double kRoundingOfNumbers = 1e-15;
  constexpr double kRoundingOfTolerance = 1e-12;
  const double distance = std::fabs(master - output);
  const double allowed = std::max(tolerance.absolute, tolerance.relative * std::fabs(master));
  const double doubt = kRoundingOfNumbers * (std::fabs(master) + std::fabs(output)) +
                       kRoundingOfTolerance * allowed + std::numeric_limits<double>::min();
  if (distance < allowed - doubt) {
    return true;
  }
  return distance > allowed + doubt ? std::optional(false) : std::nullopt;
}

}  // namespace

bool Tolerance::allows(std::string_view master, std::string_view output) const {
  const std::optional<double> plainMaster = readPlain(master);
  const std::optional<double> plainOutput = readPlain(output);
  if (plainMaster && plainOutput) {
    if (const auto answer = allowsNearly(*this, *plainMaster, *plainOutput)) {
      return *answer;
    }
  }
  const std::optional<Decimal> exactMaster = Decimal::parse(master);
  const std::optional<Decimal> exactOutput = exactMaster ? Decimal::parse(output) : std::nullopt;
  if (!exactOutput) {
    return false;
  }
  if (const auto answer = allowsNearly(*this, exactMaster->nearest(), exactOutput->nearest())) {
    return *answer;
  }
  const Decimal distance = (*exactMaster - *exactOutput).absolute();
  return Decimal::isAtMost(distance, Decimal::of(absolute)) ||
         Decimal::isAtMost(distance, exactMaster->absolute() * Decimal::of(relative));
}
