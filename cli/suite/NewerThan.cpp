#include "cli/suite/NewerThan.h"

#include <sys/stat.h>

#include <array>
#include <charconv>
#include <set>
#include <string_view>
#include <tuple>

#include "cli/suite/MissingReason.h"
#include "cli/system/CommandError.h"

namespace {

std::string shown(std::time_t time) {
  std::tm parts = {};
  localtime_r(&time, &parts);
  std::array<char, 32> text = {};
  std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts);
  return text.data();
}

[[noreturn]] void refuse(const std::string& text, const std::string& why) {
  throw CommandError("--newer-than " + text + ": " + why);
}

/// The number that is all of `text`, or nothing.
std::optional<std::int64_t> numberOf(std::string_view text) {
  std::int64_t number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  const bool isNumber = error == std::errc() && stop == end && text.front() != '-';
  return isNumber ? std::optional(number) : std::nullopt;
}

std::optional<std::time_t> secondsSinceEpoch(std::string_view text) {
  return !text.empty() && text.front() == '@' ? numberOf(text.substr(1)) : std::nullopt;
}

std::optional<std::time_t> durationBeforeNow(std::string_view text) {
  constexpr std::pair<char, std::time_t> kUnits[] = {
      {'s', 1}, {'m', 60}, {'h', 3600}, {'d', 86400}, {'w', 7 * 86400}};
  constexpr std::int64_t kMost = 1'000'000;
  for (const auto& [unit, seconds] : kUnits) {
    if (text.size() > 1 && text.back() == unit) {
      const auto number = numberOf(text.substr(0, text.size() - 1));
      return number && *number <= kMost
                 ? std::optional(std::time(nullptr) - static_cast<std::time_t>(*number) * seconds)
                 : std::nullopt;
    }
  }
  return std::nullopt;
}

auto fieldsOf(const std::tm& time) {
  return std::make_tuple(time.tm_year, time.tm_mon, time.tm_mday, time.tm_hour, time.tm_min,
                         time.tm_sec);
}

/// The times at which local clocks showed `fields`: none when they were set forward over it or
/// there is no such day, two when they were set back.
std::set<std::time_t> localTimes(const std::tm& fields) {
  std::set<std::time_t> times;
  for (const int isSummer : {0, 1}) {
    std::tm asked = fields;
    asked.tm_isdst = isSummer;
    const std::time_t time = mktime(&asked);
    std::tm found = {};
    localtime_r(&time, &found);
    if (fieldsOf(found) == fieldsOf(fields)) {
      times.insert(time);
    }
  }
  return times;
}

std::optional<std::time_t> pointInTime(const std::string& text) {
  for (const char* const form :
       {"%Y-%m-%dT%H:%M:%S", "%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M", "%Y-%m-%d %H:%M", "%Y-%m-%d"}) {
    std::tm fields = {};
    const char* const end = strptime(text.c_str(), form, &fields);
    const std::string_view rest = end != nullptr ? end : "?";
    if (rest == "Z") {
      return timegm(&fields);
    }
    if (rest.empty()) {
      const std::set<std::time_t> times = localTimes(fields);
      if (times.size() != 1) {
        refuse(text, times.empty() ? "there is no such local time"
                                   : "local clocks showed this time twice; give it in UTC, with a "
                                     "Z at its end, or as @SECONDS");
      }
      return *times.begin();
    }
  }
  return std::nullopt;
}

}  // namespace

NewerThan parseNewerThan(const std::string& text) {
  std::optional<std::time_t> time = secondsSinceEpoch(text);
  time = time ? time : durationBeforeNow(text);
  time = time ? time : pointInTime(text);
  struct stat status = {};
  const bool isFile = stat(text.c_str(), &status) == 0;
  if (time && isFile) {
    refuse(text,
           "this is a time and also the name of a file; if you mean the file, write ./" + text);
  }
  if (isFile) {
    return {status.st_mtim, shown(status.st_mtim.tv_sec) + ", the time of " + text};
  }
  if (!time) {
    refuse(text, "not a time (2026-11-21T23:10, 12h, 30m, 2d, @SECONDS), and the file " +
                     missingReason(text));
  }
  if (*time > std::time(nullptr)) {
    refuse(text, "this is in the future, so every output would be stale");
  }
  return {{*time, 0}, shown(*time)};
}

std::optional<std::string> whyStale(const std::string& file, const NewerThan& limit) {
  struct stat status = {};
  if (stat(file.c_str(), &status) != 0 || std::tie(status.st_mtim.tv_sec, status.st_mtim.tv_nsec) >=
                                              std::tie(limit.time.tv_sec, limit.time.tv_nsec)) {
    return std::nullopt;
  }
  const bool isSameSecond = status.st_mtim.tv_sec == limit.time.tv_sec;
  return "written " + shown(status.st_mtim.tv_sec) +
         (isSameSecond ? ", a fraction of a second before " : ", before ") + limit.text;
}
