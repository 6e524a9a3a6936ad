#include "cli/system/TimeStamp.h"

#include <array>
#include <ctime>

std::string timeStamp() {
  const std::time_t now = std::time(nullptr);
  std::tm parts = {};
  gmtime_r(&now, &parts);
  std::array<char, 32> text = {};
  std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
  return text.data();
}
