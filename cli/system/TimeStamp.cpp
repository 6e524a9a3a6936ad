#include "cli/system/TimeStamp.h"

#include <array>
#include <ctime>

namespace {

std::string now(const char* form, std::tm* (*inZone)(const std::time_t*, std::tm*)) {
  const std::time_t time = std::time(nullptr);
  std::tm parts = {};
  inZone(&time, &parts);
  std::array<char, 32> text = {};
  std::strftime(text.data(), text.size(), form, &parts);
  return text.data();
}

}  // namespace

std::string timeStamp() {
  return now("%Y-%m-%dT%H:%M:%SZ", gmtime_r);
}

std::string localDate() {
  return now("%Y-%m-%d", localtime_r);
}
