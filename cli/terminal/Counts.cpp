#include "cli/terminal/Counts.h"

std::string withThousands(std::uint64_t number) {
  std::string digits = std::to_string(number);
  for (std::size_t i = digits.size(); i > 3;) {
    i -= 3;
    digits.insert(i, 1, ',');
  }
  return digits;
}

std::string counted(std::uint64_t number, const std::string& thing) {
  return withThousands(number) + ' ' + thing + (number == 1 ? "" : "s");
}
