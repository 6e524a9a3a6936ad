#include "orvdiff/harness/MOXFrame.h"

#include <unicode/utf8.h>

#include <array>
#include <ctime>

#include "orvdiff/harness/MOXTestHarness.h"

namespace orvdiff::detail {

namespace {

// Spelled out at full width, as readers and parsers of the log see them.
// clang-format off
const char kDoubleRule[]  = "================================================================================";
const char kSingleRule[]  = "=------------------------------------------------------------------------------=";
const char kTitle[]       = "= MOX Test Harness v1.3                                                        =";
const char kNoText[]      = "= Test Description: None                                                       =";
const char kNoLogFile[]   = "= Log File: None                                                               =";
const char kTotalsHead1[] = "=                                  Script  Checks  Checks  Checks        TEST  =";
const char kTotalsHead2[] = "=                                  Errors  Failed  Passed  Warned       RESULT =";
const char kTableHead1[]  = "= Test                             Script  Checks  Checks  Checks        TEST  =";
const char kTableHead2[]  = "= Case                             Errors  Failed  Passed  Warned       RESULT =";
const char kOtherLabel[]  = "= Other                          ";
const char kTotalLabel[]  = "= TOTALS                         ";
// clang-format on

/// `text` cut to `width` characters, or padded with blanks to that width.
std::string fitted(const std::string& text, int width) {
  const auto length = static_cast<std::int32_t>(text.size());
  std::int32_t end = 0;
  int characters = 0;
  while (end < length && characters < width) {
    U8_FWD_1(text.data(), end, length);
    ++characters;
  }
  return text.substr(0, static_cast<std::size_t>(end)) +
         std::string(static_cast<std::size_t>(width - characters), ' ');
}

/// `text` padded with blanks to `width` characters; never cut.
std::string padded(const std::string& text, int width) {
  std::string field = fitted(text, width);
  return field.size() < text.size() ? text : field;
}

/// One of the four counters of a row, right-justified.
std::string column(std::uint64_t number) {
  const std::string digits = std::to_string(number);
  const std::size_t padding = digits.size() < 5 ? 5 - digits.size() : 0;
  return std::string(3 + padding, ' ') + digits;
}

/// The local time as 25 characters, for example "Thu Jan  1 13:00:00 1970 ".
std::string timeStamp() {
  // asctime, because it does not depend on the locale.
  const std::time_t now = std::time(nullptr);
  std::tm local = {};
  tzset();  // localtime_r may miss a change of TZ
  localtime_r(&now, &local);
  std::array<char, 64> text = {};  // 26 bytes up to the year 9999
  asctime_r(&local, text.data());
  std::string stamp = text.data();
  stamp.back() = ' ';
  return stamp;
}

}  // namespace

bool MOXBanner::isFramed() const {
  return level != MOXLogLevel::Minimal;
}

void MOXBanner::write(std::ostream& out, const std::string* logFileName) const {
  if (!isFramed()) {
    out << kTitle << std::endl;
    out << "=     Test Started: " << timeStamp() << std::string(34, ' ') << '=' << std::endl;
    return;
  }
  out << kDoubleRule << std::endl << kTitle << std::endl << kSingleRule << std::endl;
  if (level != MOXLogLevel::Concise) {
    if (description != nullptr) {
      out << "= Test Description: " << padded(description, 53) << "      =" << std::endl;
    } else {
      out << kNoText << std::endl;
    }
  }
  if (logFileName != nullptr) {
    if (!logFileName->empty()) {
      out << "= Log File: " << padded(*logFileName, 61) << "      =" << std::endl;
    } else {
      out << kNoLogFile << std::endl;
    }
  }
  out << "=  Test Started: " << timeStamp() << std::string(37, ' ') << '=' << std::endl;
  out << kDoubleRule << std::endl;
}

void MOXReport::Row::add(const Row& other) {
  scriptErrors += other.scriptErrors;
  failed += other.failed;
  passed += other.passed;
  warned += other.warned;
}

std::string MOXReport::Row::text() const {
  return label + column(scriptErrors) + column(failed) + column(passed) + column(warned) +
         "      " + result() + " =";
}

MOXReport::MOXReport(int level, const std::vector<std::unique_ptr<MOXTestCase>>& tests,
                     std::uint32_t otherScriptErrors)
    : m_level(level) {
  for (const auto& test : tests) {
    m_rows.push_back({"= " + fitted(test->getName(), 30) + " ", test->getScriptErrors(),
                      test->getChecksFailed(), test->getChecksPassed(), test->getChecksWarned()});
  }
  m_rows.push_back({kOtherLabel, otherScriptErrors});
  m_totals.label = kTotalLabel;
  for (const Row& row : m_rows) {
    m_totals.add(row);
  }
}

bool MOXReport::isFailed() const {
  return m_level > MOXLogLevel::None && m_totals.isFailed();
}

void MOXReport::write(std::ostream& out) const {
  if (m_level <= MOXLogLevel::None) {
    return;
  }
  if (m_level == MOXLogLevel::Minimal) {
    out << "= Test Finished: " << timeStamp()
        << "              TEST RESULT:   " << m_totals.result() << " =" << std::endl;
    return;
  }
  out << kDoubleRule << std::endl;
  out << "= Test Finished: " << timeStamp() << std::string(37, ' ') << '=' << std::endl;
  out << kSingleRule << std::endl;
  if (m_level == MOXLogLevel::Concise) {
    // The rule after this one follows the rows of test cases, which are left out here.
    out << kTotalsHead1 << std::endl << kTotalsHead2 << std::endl << kSingleRule << std::endl;
  } else {
    out << kTableHead1 << std::endl << kTableHead2 << std::endl << kSingleRule << std::endl;
    for (const Row& row : m_rows) {
      out << row.text() << std::endl;
    }
  }
  out << kSingleRule << std::endl << m_totals.text() << std::endl << kDoubleRule << std::endl;
}

}  // namespace orvdiff::detail
